#pragma once
#include <QStringList>
#include <functional>

class QWidget;

namespace pelorin {

// The open panels the editor shows. Each answers what the user chose (empty when cancelled); a
// test replaces them with its own choices.
struct FilePanels {
    std::function<QStringList(QWidget* parent, const QString& message, const QString& filter)> chooseFiles;
    std::function<QString(QWidget* parent, const QString& message, const QString& filter)> chooseFile;
    std::function<QString(QWidget* parent, const QString& message)> chooseFolder;

    static FilePanels desktop();
};

// Filters of the panels.
QString photoAndMovieFilter();
QString mediaFilter();
QString propertyListFilter();

}  // namespace pelorin
