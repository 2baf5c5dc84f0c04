#include "update/UpdateDocument.h"

#include "model/PropertyList.h"

#include <QVariantMap>

namespace pelorin {

namespace {

UpdateDocument failure(const QString& reason)
{
    UpdateDocument document;
    document.error = reason;
    return document;
}

bool hasDigit(const QString& text)
{
    for (QChar c : text) {
        if (c >= u'0' && c <= u'9')
            return true;
    }
    return false;
}

}  // namespace

UpdateDocument parseUpdateDocument(const QByteArray& bytes)
{
    if (bytes.size() > kMaxUpdateDocumentSize)
        return failure(QStringLiteral("The version document is larger than %1 KiB.").arg(kMaxUpdateDocumentSize / 1024));
    if (bytes.trimmed().isEmpty())
        return failure(QStringLiteral("The version document is empty."));
    const PropertyListResult read = readPropertyList(bytes);
    if (!read.value)
        return failure(QStringLiteral("The version document is not a property list: %1").arg(read.error));
    if (read.value->typeId() != QMetaType::QVariantMap)
        return failure(QStringLiteral("The version document is not a dictionary."));
    const QVariantMap root = read.value->toMap();

    const QVariant version = root.value(QStringLiteral("lastestVersion"));
    if (!version.isValid())
        return failure(QStringLiteral("The version document names no version."));
    if (version.typeId() != QMetaType::QString || !hasDigit(version.toString()))
        return failure(QStringLiteral("The version document's version is not a version number."));

    // A document without news still announces the version; news of another type is a broken document.
    const QVariant news = root.value(QStringLiteral("WhatsNew"));
    if (news.isValid() && news.typeId() != QMetaType::QString)
        return failure(QStringLiteral("The version document's news is not a text."));

    UpdateDocument document;
    document.lastestVersion = version.toString().trimmed();
    document.whatsNew = news.toString();
    return document;
}

QString whatsNewDisplayText(const QString& raw)
{
    QString text = raw;
    text.replace(u'*', u'\n');
    return text;
}

}  // namespace pelorin
