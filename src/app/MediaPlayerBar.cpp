#include "app/MediaPlayerBar.h"

#include <QAudioOutput>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QAudioDevice>
#include <QMediaDevices>
#include <QMediaPlayer>
#include <QPainter>
#include <QPainterPath>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>
#include <QVideoWidget>

#include <algorithm>
#include <limits>

namespace pelorin {
namespace {

const QString kCannotPlay = QStringLiteral("Cannot play this file");
const QString kNoSoundDevice = QStringLiteral("no sound device");
constexpr int kButtonSide = 30;

const char* const kLook = R"(
QWidget#mediaPlayerBar { background: transparent; }
QFrame#playerControls { background-color: #1C252E; border: 1px solid #415A72; border-radius: 6px; }
QToolButton#playPauseButton { background-color: #2F80B5; border: none; border-radius: 15px; }
QToolButton#playPauseButton:hover { background-color: #3A95CF; }
QToolButton#playPauseButton:pressed { background-color: #276C99; }
QSlider#positionSlider::groove:horizontal { height: 4px; background: #4A6075; border-radius: 2px; }
QSlider#positionSlider::sub-page:horizontal { background: #5FC3FF; border-radius: 2px; }
QSlider#positionSlider::handle:horizontal { background: #ECF0F1; width: 12px; height: 12px;
    margin: -4px 0; border-radius: 6px; }
QSlider#positionSlider::handle:horizontal:hover { background: #FFFFFF; }
QLabel#playerTimeLabel { color: #C9D3DC; background: transparent; border: none; }
QVideoWidget, QWidget#theplayerView { background-color: #000000; }
)";

// The button's pictures are drawn here, so they follow the look without more resource files.
QIcon playbackIcon(bool playing)
{
    constexpr int side = 16;
    constexpr qreal scale = 2.0;  // sharp on high-density screens
    QPixmap pixmap(int(side * scale), int(side * scale));
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xE6, 0xEB, 0xF0));
    if (playing) {
        painter.drawRoundedRect(QRectF(3.5, 3, 3.2, 10), 1, 1);
        painter.drawRoundedRect(QRectF(9.3, 3, 3.2, 10), 1, 1);
    } else {
        QPainterPath triangle;
        triangle.moveTo(5, 2.8);
        triangle.lineTo(13.2, 8);
        triangle.lineTo(5, 13.2);
        triangle.closeSubpath();
        painter.drawPath(triangle);
    }
    return QIcon(pixmap);
}

}  // namespace

MediaPlayerBar::MediaPlayerBar(bool video, QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("mediaPlayerBar"));
    setStyleSheet(QString::fromLatin1(kLook));

    player_ = new QMediaPlayer(this);
    // Attached only while a sound device exists: Qt's FFmpeg player crashes when it renders
    // audio to an output that has no device behind it.
    audio_ = new QAudioOutput(this);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);

    if (video) {
        video_ = new QVideoWidget(this);
        video_->setObjectName(QStringLiteral("theplayerView"));
        video_->setAspectRatioMode(Qt::KeepAspectRatio);
        video_->setMinimumHeight(200);
        video_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        video_->setAttribute(Qt::WA_StyledBackground);
        player_->setVideoOutput(video_);
        layout->addWidget(video_, 1);
    }

    auto* controls = new QFrame(this);
    controls->setObjectName(QStringLiteral("playerControls"));
    auto* row = new QHBoxLayout(controls);
    row->setContentsMargins(8, 6, 10, 6);
    row->setSpacing(10);

    playPause_ = new QToolButton(controls);
    playPause_->setObjectName(QStringLiteral("playPauseButton"));
    playPause_->setFixedSize(kButtonSide, kButtonSide);
    playPause_->setIconSize(QSize(16, 16));
    playPause_->setCursor(Qt::PointingHandCursor);
    row->addWidget(playPause_);

    slider_ = new QSlider(Qt::Horizontal, controls);
    slider_->setObjectName(QStringLiteral("positionSlider"));
    slider_->setRange(0, 0);
    slider_->setSingleStep(1000);
    slider_->setPageStep(10000);
    slider_->setCursor(Qt::PointingHandCursor);
    row->addWidget(slider_, 1);

    time_ = new QLabel(controls);
    time_->setObjectName(QStringLiteral("playerTimeLabel"));
    time_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    row->addWidget(time_);
    layout->addWidget(controls);

    connect(playPause_, &QToolButton::clicked, this, &MediaPlayerBar::togglePlayback);
    // Every change of the slider's value comes from the user: the player's own updates are blocked.
    connect(slider_, &QSlider::valueChanged, this, [this](int value) {
        if (!failed_)
            player_->setPosition(value);
    });
    connect(player_, &QMediaPlayer::positionChanged, this, &MediaPlayerBar::showPosition);
    connect(player_, &QMediaPlayer::durationChanged, this, &MediaPlayerBar::showDuration);
    connect(player_, &QMediaPlayer::playbackStateChanged, this, &MediaPlayerBar::showPlaybackState);
    connect(player_, &QMediaPlayer::errorOccurred, this, [this](QMediaPlayer::Error error) {
        if (error != QMediaPlayer::NoError)
            showProblem();
    });
    connect(player_, &QMediaPlayer::mediaStatusChanged, this, [this](QMediaPlayer::MediaStatus status) {
        if (status == QMediaPlayer::InvalidMedia)
            showProblem();
    });

    showPlaybackState();
    showTimes();
}

MediaPlayerBar::~MediaPlayerBar()
{
    // Stops the decoding threads before the outputs they feed go away.
    disconnect(player_, nullptr, this, nullptr);
    player_->stop();
}

void MediaPlayerBar::load(const QString& path, bool autoplay)
{
    pause();
    failed_ = false;
    silent_ = false;
    {
        const QSignalBlocker block(slider_);
        slider_->setRange(0, 0);
    }
    const QFileInfo file(path);
    if (path.isEmpty() || !file.isFile() || !file.isReadable()) {
        player_->setSource(QUrl());
        if (!path.isEmpty())
            showProblem();
        else
            showTimes();
        return;
    }
    player_->setSource(QUrl::fromLocalFile(file.absoluteFilePath()));
    showTimes();
    if (autoplay && !failed_)
        play();
}

void MediaPlayerBar::pause()
{
    if (player_->playbackState() == QMediaPlayer::PlayingState)
        player_->pause();
}

void MediaPlayerBar::stop()
{
    player_->stop();
}

bool MediaPlayerBar::hasSoundDevice()
{
    return !QMediaDevices::audioOutputs().isEmpty();
}

QString MediaPlayerBar::timeText(qint64 milliseconds)
{
    const qint64 seconds = std::max<qint64>(0, milliseconds) / 1000;
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

void MediaPlayerBar::togglePlayback()
{
    if (failed_ || player_->source().isEmpty())
        return;
    if (player_->playbackState() == QMediaPlayer::PlayingState) {
        player_->pause();
        return;
    }
    play();
}

void MediaPlayerBar::play()
{
    // The device may have come or gone since the last play; the output only changes while the
    // player is not playing.
    const bool sound = hasSoundDevice();
    player_->setAudioOutput(sound ? audio_ : nullptr);
    silent_ = !sound;
    if (silent_ && !video_) {
        showTimes();
        return;
    }
    player_->play();
    showTimes();
}

void MediaPlayerBar::showPlaybackState()
{
    const bool playing = player_->playbackState() == QMediaPlayer::PlayingState;
    playPause_->setIcon(playbackIcon(playing));
    playPause_->setToolTip(playing ? QStringLiteral("Pause") : QStringLiteral("Play"));
}

void MediaPlayerBar::showPosition(qint64 position)
{
    if (!slider_->isSliderDown()) {
        const QSignalBlocker block(slider_);
        slider_->setValue(int(std::clamp<qint64>(position, 0, slider_->maximum())));
    }
    showTimes();
}

void MediaPlayerBar::showDuration(qint64 duration)
{
    {
        const QSignalBlocker block(slider_);
        slider_->setRange(0, int(std::clamp<qint64>(duration, 0, std::numeric_limits<int>::max())));
    }
    showTimes();
}

void MediaPlayerBar::showTimes()
{
    if (failed_)
        return;
    QString text = timeText(player_->position()) + QStringLiteral(" / ") + timeText(player_->duration());
    if (silent_)
        text = video_ ? text + QStringLiteral(" (") + kNoSoundDevice + QLatin1Char(')')
                      : QStringLiteral("Cannot play: ") + kNoSoundDevice;
    time_->setText(text);
}

void MediaPlayerBar::showProblem()
{
    failed_ = true;
    time_->setText(kCannotPlay);
}

}  // namespace pelorin
