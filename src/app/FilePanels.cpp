#include "app/FilePanels.h"

#include "model/FileKinds.h"

#include <QFileDialog>

namespace pelorin {

namespace {

QString patterns(std::initializer_list<FileKindList> lists)
{
    QStringList words;
    for (FileKindList list : lists) {
        for (const QString& word : kindListWords(list)) {
            const QString lower = QStringLiteral("*.") + word.toLower();
            const QString upper = QStringLiteral("*.") + word.toUpper();
            if (!words.contains(lower))
                words << lower << upper;
        }
    }
    return words.join(QLatin1Char(' '));
}

}  // namespace

QString photoAndMovieFilter()
{
    return QStringLiteral("Photos and movies (%1);;All files (*)")
        .arg(patterns({FileKindList::Image, FileKindList::Video}));
}

QString mediaFilter()
{
    return QStringLiteral("Photos, audio and movies (%1);;All files (*)")
        .arg(patterns({FileKindList::Image, FileKindList::Audio, FileKindList::Video}));
}

QString propertyListFilter()
{
    return QStringLiteral("Property lists (*.plist);;All files (*)");
}

FilePanels FilePanels::desktop()
{
    FilePanels panels;
    panels.chooseFiles = [](QWidget* parent, const QString& message, const QString& filter) {
        return QFileDialog::getOpenFileNames(parent, message, QString(), filter);
    };
    panels.chooseFile = [](QWidget* parent, const QString& message, const QString& filter) {
        return QFileDialog::getOpenFileName(parent, message, QString(), filter);
    };
    panels.chooseFolder = [](QWidget* parent, const QString& message) {
        return QFileDialog::getExistingDirectory(parent, message, QString(), QFileDialog::ShowDirsOnly);
    };
    return panels;
}

}  // namespace pelorin
