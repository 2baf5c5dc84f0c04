#include "TestPaths.h"
#include "video/MoviePoster.h"

#include <QElapsedTimer>
#include <QProcess>
#include <gtest/gtest.h>

using namespace pelorin;

namespace {

// ffmpeg's own first frame of the movie, as a reference to compare colours with.
QImage ffmpegFirstFrame(const QString& path, int width, int height)
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path, QStringLiteral("-frames:v"),
                  QStringLiteral("1"), QStringLiteral("-vf"), QStringLiteral("scale=%1:%2").arg(width).arg(height),
                  QStringLiteral("-f"), QStringLiteral("image2pipe"), QStringLiteral("-vcodec"), QStringLiteral("png"),
                  QStringLiteral("-")});
    if (!ffmpeg.waitForFinished(60000))
        return {};
    return QImage::fromData(ffmpeg.readAllStandardOutput(), "PNG");
}

double meanDifference(const QImage& a, const QImage& b)
{
    double total = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QColor p = a.pixelColor(x, y);
            const QColor q = b.pixelColor(x, y);
            total += std::abs(p.red() - q.red()) + std::abs(p.green() - q.green()) + std::abs(p.blue() - q.blue());
        }
    }
    return total / (3.0 * a.width() * a.height());
}

}  // namespace

TEST(MoviePoster, FirstFrameOfEachCodecMatchesFfmpegAndKeepsTheAspect)
{
    struct Case {
        const char* file;
        QSize expected;
    };
    for (const Case& c : {Case{"ft-imovie.mp4", {170, 94}}, Case{"mde-sample.3gp", {170, 139}},
                          Case{"taglib-optimized.mkv", {170, 139}}}) {
        SCOPED_TRACE(c.file);
        QString error;
        const QImage poster = moviePosterFrame(test::dataPath(c.file), 170, &error);
        ASSERT_FALSE(poster.isNull()) << error.toStdString();
        EXPECT_EQ(poster.size(), c.expected);
        const QImage reference = ffmpegFirstFrame(test::dataPath(c.file), poster.width(), poster.height());
        ASSERT_EQ(reference.size(), poster.size());
        EXPECT_LT(meanDifference(poster, reference), 12.0);
    }
}

// A header without frames, a broken box tree, audio only, a fuzzed file.
TEST(MoviePoster, BrokenOrPictureLessFilesGiveAReasonQuickly)
{
    QElapsedTimer clock;
    clock.start();
    for (const char* file : {"et-Canon_RIFF.avi", "mde-fuzz-isom.mp4", "et-MP3.mp3", "exiv2-issue_2366_poc.mp4"}) {
        SCOPED_TRACE(file);
        QString error;
        EXPECT_TRUE(moviePosterFrame(test::dataPath(file), 170, &error).isNull());
        EXPECT_FALSE(error.isEmpty());
    }
    EXPECT_LT(clock.elapsed(), 20000);
}
