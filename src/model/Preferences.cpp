#include "model/Preferences.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>

namespace pelorin {

QStringList stampCornerTitles()
{
    return {QStringLiteral("Upper left corner"), QStringLiteral("Upper right corner"),
            QStringLiteral("Lower left corner"), QStringLiteral("Lower right corner")};
}

QStringList stampDateFormatTitles()
{
    return {QStringLiteral("MM/DD/YYYY HH:MM"), QStringLiteral("DD/MM/YYYY HH:MM"),
            QStringLiteral("YYYY/MM/DD HH:MM")};
}

int popupIndexForTitle(const QStringList& items, const QString& title)
{
    for (int i = 0; i < items.size(); ++i) {
        if (items[i].compare(title, Qt::CaseInsensitive) == 0)
            return i;
    }
    return 0;
}

Preferences::Preferences()
    : store_(std::make_unique<QSettings>(QStringLiteral("Quorvane"), QStringLiteral("Pelorin")))
{
}

Preferences::Preferences(std::unique_ptr<QSettings> store) : store_(std::move(store)) {}

Preferences::~Preferences() = default;

QString Preferences::defaultStoragePath()
{
    QString movies = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    if (movies.isEmpty())
        movies = QDir::homePath() + QStringLiteral("/Videos");
    return movies + QStringLiteral("/com.Quorvane.mediametadata");
}

PreferenceValues Preferences::peek() const
{
    PreferenceValues v;
    v.storagePath = store_->value(PreferenceKey::StoragePath, defaultStoragePath()).toString();
    v.fontName = store_->value(PreferenceKey::FontName).toString();
    if (v.fontName.trimmed().isEmpty())
        v.fontName = QString::fromLatin1(kDefaultFontName);
    // "fontsize" is never written at first start, so a missing (or broken) size means the
    // default, at every start; a size of 0 would draw nothing and be saved back as 0.
    bool sizeOk = false;
    const int size = store_->value(PreferenceKey::FontSize).toInt(&sizeOk);
    v.fontSize = sizeOk && size >= kMinFontSize && size <= kMaxFontSize ? size : kDefaultFontSize;
    v.cornerTitle =
        store_->value(PreferenceKey::Position, QString::fromLatin1(kFirstStartCorner)).toString();
    v.dateFormatTitle =
        store_->value(PreferenceKey::DateFormat, QString::fromLatin1(kDefaultDateFormat))
            .toString();
    v.cornerIndex = popupIndexForTitle(stampCornerTitles(), v.cornerTitle);
    v.dateFormatIndex = popupIndexForTitle(stampDateFormatTitles(), v.dateFormatTitle);
    return v;
}

PreferenceValues Preferences::loadAtStartup()
{
    const PreferenceValues v = peek();
    store_->setValue(PreferenceKey::StoragePath, v.storagePath);
    store_->setValue(PreferenceKey::FontName, v.fontName);
    store_->setValue(PreferenceKey::Position, v.cornerTitle);
    store_->setValue(PreferenceKey::DateFormat, v.dateFormatTitle);
    store_->sync();
    return v;
}

void Preferences::save(const PreferenceValues& values)
{
    store_->setValue(PreferenceKey::FontName, values.fontName);
    store_->setValue(PreferenceKey::FontSize, values.fontSize);
    store_->setValue(PreferenceKey::Position, values.cornerTitle);
    store_->setValue(PreferenceKey::DateFormat, values.dateFormatTitle);
    store_->setValue(PreferenceKey::StoragePath, values.storagePath);
    store_->sync();
}

bool Preferences::setFromText(const QString& key, const QString& value, QString* error)
{
    auto fail = [error](const QString& message) {
        if (error)
            *error = message;
        return false;
    };
    if (key == PreferenceKey::StoragePath) {
        if (value.trimmed().isEmpty())
            return fail(QStringLiteral("the storage folder cannot be empty"));
        store_->setValue(key, QDir::cleanPath(QDir(value).absolutePath()));
    } else if (key == PreferenceKey::FontName) {
        if (value.trimmed().isEmpty())
            return fail(QStringLiteral("the font name cannot be empty"));
        store_->setValue(key, value);
    } else if (key == PreferenceKey::FontSize) {
        bool ok = false;
        const int size = value.trimmed().toInt(&ok);
        if (!ok || size < kMinFontSize || size > kMaxFontSize)
            return fail(QStringLiteral("the font size must be a whole number from 1 to 1000"));
        store_->setValue(key, size);
    } else if (key == PreferenceKey::Position || key == PreferenceKey::DateFormat) {
        const QStringList items =
            key == PreferenceKey::Position ? stampCornerTitles() : stampDateFormatTitles();
        for (const QString& item : items) {
            if (item.compare(value.trimmed(), Qt::CaseInsensitive) == 0) {
                store_->setValue(key, item);
                store_->sync();
                return true;
            }
        }
        return fail(QStringLiteral("%1 must be one of: %2").arg(key, items.join(QStringLiteral(", "))));
    } else {
        return fail(QStringLiteral("unknown preference \"%1\"").arg(key));
    }
    store_->sync();
    return true;
}

QString Preferences::storagePath() const { return peek().storagePath; }

DeploymentSettings Preferences::deployment() const
{
    const auto text = [this](const QString& key, const char* fallback) {
        return store_->value(key, QString::fromUtf8(fallback)).toString();
    };
    DeploymentSettings settings;
    settings.mapTileUrl = text(DeploymentKey::MapTileUrl, "https://tile.openstreetmap.org/{z}/{x}/{y}.png");
    settings.mapAttribution = text(DeploymentKey::MapAttribution, "\u00a9 OpenStreetMap contributors");
    settings.updateServer = text(DeploymentKey::UpdateServer, "https://www.quorvane.com");
    settings.downloadPage = text(DeploymentKey::DownloadPage, "https://www.quorvane.com/pelorin/download");
    settings.guidePage = text(DeploymentKey::GuidePage, "https://www.quorvane.com/pelorin/guide");
    settings.supportPage = text(DeploymentKey::SupportPage, "https://www.quorvane.com/support");
    return settings;
}

bool Preferences::isStored(const QString& key) const { return store_->contains(key); }

void Preferences::sync() { store_->sync(); }

}  // namespace pelorin
