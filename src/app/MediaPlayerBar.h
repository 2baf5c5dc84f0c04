#pragma once

#include <QString>
#include <QWidget>

class QAudioOutput;
class QLabel;
class QMediaPlayer;
class QSlider;
class QToolButton;
class QVideoWidget;

namespace pelorin {

// The player of the media editors: play/pause, a seeking slider and the elapsed and total time,
// with a video surface above them for movies. A file that cannot be played only shows so; the
// bar stays ready for the next file.
class MediaPlayerBar : public QWidget {
    Q_OBJECT
public:
    explicit MediaPlayerBar(bool video, QWidget* parent = nullptr);
    ~MediaPlayerBar() override;

    // Pauses what played and puts the file in its place.
    void load(const QString& path, bool autoplay);
    void pause();
    void stop();
    QMediaPlayer* player() const { return player_; }

    // Whether the system offers any audio output; without one the bar plays movies silently.
    static bool hasSoundDevice();

    // "m:ss" of a time in milliseconds; minutes keep counting past the hour.
    static QString timeText(qint64 milliseconds);

private:
    void togglePlayback();
    void play();
    void showPlaybackState();
    void showPosition(qint64 position);
    void showDuration(qint64 duration);
    void showTimes();
    void showProblem();

    QMediaPlayer* player_ = nullptr;
    QAudioOutput* audio_ = nullptr;
    QVideoWidget* video_ = nullptr;
    QToolButton* playPause_ = nullptr;
    QSlider* slider_ = nullptr;
    QLabel* time_ = nullptr;
    bool failed_ = false;
    bool silent_ = false;  // the last play found no sound device
};

}  // namespace pelorin
