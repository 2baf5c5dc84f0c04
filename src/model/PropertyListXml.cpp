// XML property lists: the reader walks the document with QXmlStreamReader (which expands no
// external entities and bounds internal ones); the writer emits the usual Apple layout.
#include "model/PropertyList.h"

#include <QDateTime>
#include <QXmlStreamReader>

#include <cmath>
#include <limits>

namespace pelorin {
namespace plist_detail {
namespace {

class XmlReader {
public:
    explicit XmlReader(const QByteArray& bytes) : xml_(bytes) {}

    PropertyListResult read()
    {
        QVariant value;
        if (!xml_.readNextStartElement())
            return failure(QStringLiteral("no property list element"));
        if (xml_.name() == QLatin1String("plist")) {
            if (!xml_.readNextStartElement())
                return failure(QStringLiteral("the property list is empty"));
            if (!readValue(1, &value))
                return failure(error_);
            if (xml_.readNextStartElement())
                return failure(QStringLiteral("more than one value at the top"));
        } else if (!readValue(0, &value)) {
            return failure(error_);
        }
        while (!xml_.atEnd())
            xml_.readNext();
        if (xml_.hasError())
            return failure(QString());
        return {value, {}};
    }

private:
    PropertyListResult failure(const QString& why)
    {
        QString text = why;
        if (xml_.hasError())
            text = QStringLiteral("%1 (line %2)").arg(xml_.errorString()).arg(xml_.lineNumber());
        return {std::nullopt, QStringLiteral("the file is not a readable property list: ") + text};
    }

    bool fail(const QString& why)
    {
        if (error_.isEmpty())
            error_ = QStringLiteral("%1 (line %2)").arg(why).arg(xml_.lineNumber());
        return false;
    }

    bool text(QString* out)
    {
        *out = xml_.readElementText();
        return !xml_.hasError() || fail(xml_.errorString());
    }

    // The current token is the value's start element; on return its end element is consumed.
    bool readValue(int depth, QVariant* out)
    {
        if (depth > kMaxDepth)
            return fail(QStringLiteral("nested too deeply"));
        if (++values_ > kMaxValues)
            return fail(QStringLiteral("too many values"));
        const QStringView name = xml_.name();
        QString content;
        if (name == QLatin1String("dict"))
            return readDictionary(depth, out);
        if (name == QLatin1String("array")) {
            QVariantList list;
            while (xml_.readNextStartElement()) {
                QVariant item;
                if (!readValue(depth + 1, &item))
                    return false;
                list.append(item);
            }
            *out = QVariant(list);
            return !xml_.hasError() || fail(xml_.errorString());
        }
        if (name == QLatin1String("string")) {
            if (!text(&content))
                return false;
            *out = QVariant(content);
            return true;
        }
        if (name == QLatin1String("integer")) {
            if (!text(&content))
                return false;
            return parseInteger(content.trimmed(), out);
        }
        if (name == QLatin1String("real")) {
            if (!text(&content))
                return false;
            return parseReal(content.trimmed(), out);
        }
        if (name == QLatin1String("true") || name == QLatin1String("false")) {
            const bool value = name == QLatin1String("true");
            if (!text(&content))
                return false;
            *out = QVariant(value);
            return true;
        }
        if (name == QLatin1String("date")) {
            if (!text(&content))
                return false;
            const QDateTime date = QDateTime::fromString(content.trimmed(), Qt::ISODateWithMs);
            if (!date.isValid() || date.date().year() < 1 || date.date().year() > 9999)
                return fail(QStringLiteral("bad date \"%1\"").arg(content.left(40)));
            *out = QVariant(date.toUTC());
            return true;
        }
        if (name == QLatin1String("data")) {
            if (!text(&content))
                return false;
            QByteArray base64 = content.toLatin1();
            base64.removeIf([](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
            auto decoded = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
            if (!decoded)
                return fail(QStringLiteral("bad base64 data"));
            *out = QVariant(*decoded);
            return true;
        }
        return fail(QStringLiteral("unknown element <%1>").arg(name.toString().left(40)));
    }

    bool readDictionary(int depth, QVariant* out)
    {
        QVariantMap map;
        while (xml_.readNextStartElement()) {
            if (xml_.name() != QLatin1String("key"))
                return fail(QStringLiteral("a dictionary value has no key"));
            QString key;
            if (!text(&key))
                return false;
            if (!xml_.readNextStartElement())
                return fail(QStringLiteral("the key \"%1\" has no value").arg(key.left(40)));
            QVariant value;
            if (!readValue(depth + 1, &value))
                return false;
            map.insert(key, value);
        }
        *out = QVariant(map);
        return !xml_.hasError() || fail(xml_.errorString());
    }

    bool parseInteger(const QString& text, QVariant* out)
    {
        bool ok = false;
        const bool hex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
        const qlonglong value = hex ? text.mid(2).toLongLong(&ok, 16) : text.toLongLong(&ok, 10);
        if (ok) {
            *out = QVariant(value);
            return true;
        }
        const QString digits = text.startsWith(QLatin1Char('+')) ? text.mid(1) : text;
        const qulonglong large = hex ? text.mid(2).toULongLong(&ok, 16) : digits.toULongLong(&ok, 10);
        if (ok) {
            *out = QVariant(large);
            return true;
        }
        return fail(QStringLiteral("bad integer \"%1\"").arg(text.left(40)));
    }

    bool parseReal(const QString& text, QVariant* out)
    {
        const QString lower = text.toLower();
        if (lower == QLatin1String("nan")) {
            *out = QVariant(std::numeric_limits<double>::quiet_NaN());
            return true;
        }
        if (lower == QLatin1String("+infinity") || lower == QLatin1String("infinity")
            || lower == QLatin1String("inf") || lower == QLatin1String("+inf")) {
            *out = QVariant(std::numeric_limits<double>::infinity());
            return true;
        }
        if (lower == QLatin1String("-infinity") || lower == QLatin1String("-inf")) {
            *out = QVariant(-std::numeric_limits<double>::infinity());
            return true;
        }
        bool ok = false;
        const double value = text.toDouble(&ok);
        if (!ok)
            return fail(QStringLiteral("bad real \"%1\"").arg(text.left(40)));
        *out = QVariant(value);
        return true;
    }

    QXmlStreamReader xml_;
    qint64 values_ = 0;
    QString error_;
};

class XmlWriter {
public:
    bool write(const QVariant& value)
    {
        out_ += QStringLiteral(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n");
        if (!writeValue(value, 0))
            return false;
        out_ += QStringLiteral("</plist>\n");
        return true;
    }

    QByteArray bytes() const { return out_.toUtf8(); }
    const QString& error() const { return error_; }

private:
    bool fail(const QString& why)
    {
        error_ = why;
        return false;
    }

    void indent(int depth) { out_.append(QString(depth, QLatin1Char('\t'))); }

    void element(int depth, const char* name, const QString& text)
    {
        indent(depth);
        out_ += QLatin1Char('<') + QLatin1String(name) + QLatin1Char('>') + text
                + QLatin1String("</") + QLatin1String(name) + QLatin1String(">\n");
    }

    // Escapes markup, and carriage returns so that reading does not turn them into line feeds.
    bool escaped(const QString& text, QString* out)
    {
        out->clear();
        out->reserve(text.size());
        for (qsizetype i = 0; i < text.size(); ++i) {
            const char16_t c = text[i].unicode();
            if (c == u'&')
                *out += QLatin1String("&amp;");
            else if (c == u'<')
                *out += QLatin1String("&lt;");
            else if (c == u'>')
                *out += QLatin1String("&gt;");
            else if (c == u'\r')
                *out += QLatin1String("&#13;");
            else if ((c < 0x20 && c != u'\t' && c != u'\n') || c == 0xFFFE || c == 0xFFFF)
                return fail(QStringLiteral("a text holds a control character that XML cannot carry"));
            else if (QChar::isHighSurrogate(c)) {
                if (i + 1 >= text.size() || !text[i + 1].isLowSurrogate())
                    return fail(QStringLiteral("a text holds a broken UTF-16 character"));
                out->append(text[i]);
                out->append(text[++i]);
            } else if (QChar::isLowSurrogate(c)) {
                return fail(QStringLiteral("a text holds a broken UTF-16 character"));
            } else {
                out->append(text[i]);
            }
        }
        return true;
    }

    bool writeValue(const QVariant& value, int depth)
    {
        if (depth > kMaxDepth)
            return fail(QStringLiteral("the value is nested too deeply for a property list"));
        QString text;
        switch (value.typeId()) {
        case QMetaType::Bool:
            indent(depth);
            out_ += value.toBool() ? QLatin1String("<true/>\n") : QLatin1String("<false/>\n");
            return true;
        case QMetaType::Int:
        case QMetaType::Long:
        case QMetaType::LongLong:
        case QMetaType::Short:
        case QMetaType::SChar:
        case QMetaType::Char:
            element(depth, "integer", QString::number(value.toLongLong()));
            return true;
        case QMetaType::UInt:
        case QMetaType::ULong:
        case QMetaType::ULongLong:
        case QMetaType::UShort:
        case QMetaType::UChar:
            element(depth, "integer", QString::number(value.toULongLong()));
            return true;
        case QMetaType::Double:
        case QMetaType::Float: {
            const double d = value.toDouble();
            if (std::isnan(d))
                text = QStringLiteral("nan");
            else if (std::isinf(d))
                text = d > 0 ? QStringLiteral("+infinity") : QStringLiteral("-infinity");
            else
                text = QString::number(d, 'g', QLocale::FloatingPointShortest);
            element(depth, "real", text);
            return true;
        }
        case QMetaType::QString:
            if (!escaped(value.toString(), &text))
                return false;
            element(depth, "string", text);
            return true;
        case QMetaType::QByteArray:
            element(depth, "data", QString::fromLatin1(value.toByteArray().toBase64()));
            return true;
        case QMetaType::QDateTime: {
            const QDateTime date = value.toDateTime().toUTC();
            if (!date.isValid() || date.date().year() < 1 || date.date().year() > 9999)
                return fail(QStringLiteral("a date outside the years 1 to 9999 cannot be written"));
            // Whole seconds, the form every property-list reader accepts.
            element(depth, "date", date.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ")));
            return true;
        }
        case QMetaType::QVariantList:
        case QMetaType::QStringList: {
            const QVariantList list = value.toList();
            indent(depth);
            if (list.isEmpty()) {
                out_ += QLatin1String("<array/>\n");
                return true;
            }
            out_ += QLatin1String("<array>\n");
            for (const QVariant& item : list) {
                if (!writeValue(item, depth + 1))
                    return false;
            }
            indent(depth);
            out_ += QLatin1String("</array>\n");
            return true;
        }
        case QMetaType::QVariantMap: {
            const QVariantMap map = value.toMap();
            indent(depth);
            if (map.isEmpty()) {
                out_ += QLatin1String("<dict/>\n");
                return true;
            }
            out_ += QLatin1String("<dict>\n");
            for (auto it = map.cbegin(); it != map.cend(); ++it) {
                if (!escaped(it.key(), &text))
                    return false;
                element(depth + 1, "key", text);
                if (!writeValue(it.value(), depth + 1))
                    return false;
            }
            indent(depth);
            out_ += QLatin1String("</dict>\n");
            return true;
        }
        default:
            return fail(QStringLiteral("a value of type %1 cannot be written to a property list")
                            .arg(QString::fromLatin1(value.isValid() ? value.typeName() : "null")));
        }
    }

    QString out_;
    QString error_;
};

}  // namespace

PropertyListResult readXml(const QByteArray& bytes)
{
    return XmlReader(bytes).read();
}

}  // namespace plist_detail

PropertyListXml writePropertyListXml(const QVariant& value)
{
    plist_detail::XmlWriter writer;
    if (!writer.write(value))
        return {std::nullopt, writer.error()};
    return {writer.bytes(), {}};
}

}  // namespace pelorin
