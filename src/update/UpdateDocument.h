#pragma once
#include <QByteArray>
#include <QString>

namespace pelorin {

// The maker's version document: a property list (XML or binary) whose dictionary names the
// newest version ("lastestVersion", spelled as the server spells it) and its news ("WhatsNew").
struct UpdateDocument {
    QString lastestVersion;
    QString whatsNew;  // as served: "*" marks a line break
    QString error;     // why the document cannot be used; empty when it can
};

// Larger answers are refused unread: the real document is a few hundred bytes.
constexpr qint64 kMaxUpdateDocumentSize = 256 * 1024;

UpdateDocument parseUpdateDocument(const QByteArray& bytes);

// The news as it is shown: every "*" becomes a line break.
QString whatsNewDisplayText(const QString& raw);

}  // namespace pelorin
