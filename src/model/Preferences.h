#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class QSettings;

namespace pelorin {

// The preference keys, spelled as existing stores have them ("Postion" included).
namespace PreferenceKey {
inline const QString StoragePath = QStringLiteral("storagePath");
inline const QString FontName = QStringLiteral("fontName");
inline const QString FontSize = QStringLiteral("fontsize");
inline const QString Position = QStringLiteral("Postion");
inline const QString DateFormat = QStringLiteral("Dateformat");
}  // namespace PreferenceKey

// The items of the date-stamp corner and format pop-ups, in order.
QStringList stampCornerTitles();
QStringList stampDateFormatTitles();

// What the editor works with after start-up: the values, and which pop-up item each title selects.
struct PreferenceValues {
    QString storagePath;
    QString fontName;
    int fontSize = 14;
    QString cornerTitle;      // as stored
    QString dateFormatTitle;  // as stored
    int cornerIndex = 0;      // pop-up item the stored title selects (first item when none)
    int dateFormatIndex = 0;
};

// Where the editor reaches the outside world. Deployments (and tests) set them in the same store
// as the preferences; none is written by the editor itself.
struct DeploymentSettings {
    QString mapTileUrl;     // "{z}", "{x}", "{y}" are replaced by the tile's zoom and numbers
    QString mapAttribution;
    QString updateServer;   // scheme and host; the document is "/product/mediametaVersion.plist"
    QString downloadPage;
    QString guidePage;
    QString supportPage;
};
namespace DeploymentKey {
inline const QString MapTileUrl = QStringLiteral("mapTileUrl");
inline const QString MapAttribution = QStringLiteral("mapAttribution");
inline const QString UpdateServer = QStringLiteral("updateServer");
inline const QString DownloadPage = QStringLiteral("downloadPage");
inline const QString GuidePage = QStringLiteral("guidePage");
inline const QString SupportPage = QStringLiteral("supportPage");
}  // namespace DeploymentKey

// The user's preferences, kept in QSettings under organisation "Quorvane", application "Pelorin".
class Preferences {
public:
    Preferences();                                         // the user's own store
    explicit Preferences(std::unique_ptr<QSettings> store);  // any store (tests)
    ~Preferences();

    static QString defaultStoragePath();  // <videos folder>/com.Quorvane.mediametadata
    static constexpr const char* kDefaultFontName = "Lucida Grande";
    static constexpr int kDefaultFontSize = 14;
    static constexpr int kMinFontSize = 1;
    static constexpr int kMaxFontSize = 1000;
    static constexpr const char* kFirstStartCorner = "lower left corner";
    static constexpr const char* kDefaultDateFormat = "MM/DD/YYYY HH:MM";

    // Start-up: reads every key, writes the defaults of the missing ones ("fontsize" excepted,
    // whose 14 stays in memory) and writes present ones back unchanged. The storage folder is
    // not created here; the caller does that.
    PreferenceValues loadAtStartup();

    // Reads without writing anything, with the same defaults (for tools that only look).
    PreferenceValues peek() const;

    // The preferences sheet's save: writes all five keys.
    void save(const PreferenceValues& values);

    // Sets one key from text, checking the value. Corner and format titles are matched to their
    // pop-up items without regard to case and stored with the item's own spelling.
    bool setFromText(const QString& key, const QString& value, QString* error);

    QString storagePath() const;
    DeploymentSettings deployment() const;
    bool isStored(const QString& key) const;
    void sync();

private:
    std::unique_ptr<QSettings> store_;
};

// Index of the pop-up item whose title matches, letter case ignored; 0 when none does.
int popupIndexForTitle(const QStringList& items, const QString& title);

}  // namespace pelorin
