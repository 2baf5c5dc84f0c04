#include "update/UpdateChecker.h"
#include "update/UpdateDocument.h"

#include "LoopbackHttpServer.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

using namespace pelorin;

namespace {

const QByteArray kPath = "/product/mediametaVersion.plist";

QCoreApplication& application()
{
    static int argc = 1;
    static char name[] = "update_tests";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return app;
}

test::LoopbackHttpServer::Response document(const QByteArray& version, const QByteArray& news = "Quicker*Safer")
{
    return {200, "application/x-plist",
            "<plist version=\"1.0\"><dict><key>lastestVersion</key><string>" + version +
                "</string><key>WhatsNew</key><string>" + news + "</string></dict></plist>"};
}

// Everything a checker told, as "signal:arguments".
struct Told : QStringList {
    explicit Told(UpdateChecker& checker)
    {
        QObject::connect(&checker, &UpdateChecker::updateAvailable, [this](QString n, QString c, QString w) {
            append(QStringList{QStringLiteral("update"), n, c, w}.join(u':'));
        });
        QObject::connect(&checker, &UpdateChecker::upToDate, [this](QString c) { append(QStringLiteral("upToDate:") + c); });
        QObject::connect(&checker, &UpdateChecker::checkFailed, [this](QString r) { append(QStringLiteral("failed:") + r); });
    }
};

// Runs the event loop until the checker is idle, and a little longer so a late signal is seen.
void waitUntilIdle(const UpdateChecker* checker, int limitMs = 10000)
{
    QElapsedTimer timer;
    timer.start();
    while (checker && checker->isChecking() && timer.elapsed() < limitMs)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    ASSERT_FALSE(checker && checker->isChecking()) << "the check did not end";
    for (const qint64 idle = timer.elapsed(); timer.elapsed() < idle + 150;)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

class UpdateCheckerTest : public ::testing::Test {
protected:
    QCoreApplication& app = application();  // before the server: its sockets need the event loop
    test::LoopbackHttpServer server;
};

}  // namespace

TEST_F(UpdateCheckerTest, OnlyANewerVersionIsAnnouncedUnasked)
{
    server.setResponse(kPath, document("1.10", "Batch dates*Map"));
    UpdateChecker newer(server.baseUrl() + QStringLiteral("/"), QStringLiteral("1.9.3"));
    Told told(newer);
    newer.check(false);
    waitUntilIdle(&newer);
    EXPECT_EQ(told, QStringList{QStringLiteral("update:1.10:1.9.3:Batch dates*Map")});
    ASSERT_EQ(server.requests().size(), 1);
    EXPECT_EQ(server.requests()[0].path, kPath);

    // Without a version given, the program's own is the one compared.
    server.setResponse(kPath, document(PELORIN_VERSION));
    UpdateChecker same(server.baseUrl());
    Told toldSame(same);
    same.check(false);
    waitUntilIdle(&same);
    EXPECT_TRUE(toldSame.isEmpty());
    same.check(true);
    waitUntilIdle(&same);
    EXPECT_EQ(toldSame, QStringList{QStringLiteral("upToDate:" PELORIN_VERSION)});
}

TEST_F(UpdateCheckerTest, FailuresReachOnlyAUserWhoAsked)
{
    server.setResponse(kPath, {200, "text/html", "<html>maintenance</html>"});
    server.setResponse("/broken" + kPath, {500, "text/plain", "oops"});
    server.setResponse("/big" + kPath, document("9.0", QByteArray(kMaxUpdateDocumentSize, 'x')));
    QTcpServer closed;
    closed.listen(QHostAddress::LocalHost, 0);
    const QString closedUrl = QStringLiteral("http://127.0.0.1:%1").arg(closed.serverPort());
    closed.close();
    for (const QString& address : {server.baseUrl(), server.baseUrl() + QStringLiteral("/broken"),
                                   server.baseUrl() + QStringLiteral("/big"), closedUrl, QString()}) {
        SCOPED_TRACE(address.toStdString());
        UpdateChecker checker(address, QStringLiteral("1.0"));
        Told told(checker);
        checker.check(false);
        waitUntilIdle(&checker);
        EXPECT_TRUE(told.isEmpty());
        checker.check(true);
        waitUntilIdle(&checker);
        ASSERT_EQ(told.size(), 1);
        EXPECT_TRUE(told[0].startsWith(QStringLiteral("failed:")) && told[0].size() > 10) << told[0].toStdString();
    }
}

TEST_F(UpdateCheckerTest, SilentAndEndlessServersAreCutOff)
{
    // One server never answers; the other streams without a length or an end.
    QTcpServer silent, endless;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost, 0) && endless.listen(QHostAddress::LocalHost, 0));
    QObject::connect(&endless, &QTcpServer::newConnection, [&endless] {
        QTcpSocket* socket = endless.nextPendingConnection();
        socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        auto* pump = new QTimer(socket);
        QObject::connect(pump, &QTimer::timeout, [socket] { socket->write(QByteArray(32 * 1024, 'x')); });
        pump->start(5);
    });
    for (QTcpServer* tcp : {&silent, &endless}) {
        UpdateChecker checker(QStringLiteral("http://127.0.0.1:%1").arg(tcp->serverPort()), QStringLiteral("1.0"));
        checker.setTimeout(std::chrono::milliseconds(tcp == &silent ? 300 : 8000));
        Told told(checker);
        QElapsedTimer timer;
        timer.start();
        checker.check(true);
        waitUntilIdle(&checker, 15000);
        EXPECT_LT(timer.elapsed(), 5000);
        ASSERT_EQ(told.size(), 1);
        const QString reason = tcp == &silent ? QStringLiteral("did not answer") : QStringLiteral("larger than 256 KiB");
        EXPECT_TRUE(told[0].contains(reason)) << told[0].toStdString();
    }
}

TEST_F(UpdateCheckerTest, ASecondCheckReplacesTheFirst)
{
    server.setResponse(kPath, document("1.0"));
    UpdateChecker checker(server.baseUrl(), QStringLiteral("1.0"));
    Told told(checker);
    checker.check(false);
    checker.check(true);  // the first one's cancellation is no failure to report
    waitUntilIdle(&checker);
    EXPECT_EQ(told, QStringList{QStringLiteral("upToDate:1.0")});

    // A checker that goes away mid-check leaves nothing behind to call it.
    auto* gone = new UpdateChecker(server.baseUrl(), QStringLiteral("0.1"));
    gone->check(true);
    delete gone;
    waitUntilIdle(nullptr);
}

TEST_F(UpdateCheckerTest, ACheckWritesNothingToDisk)
{
    // With times, a rewritten file shows too.
    const auto listing = [](const QString& folder, bool withTimes) {
        QStringList entries;
        for (const QFileInfo& entry : QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
            entries.append(entry.fileName() + (withTimes ? entry.lastModified().toString(Qt::ISODateWithMs) : QString()));
        }
        return entries;
    };
    server.setResponse(kPath, document("5.0"));
    const QStringList tmpBefore = listing(QStringLiteral("/tmp"), false);
    const QStringList hereBefore = listing(QDir::currentPath(), true);
    UpdateChecker checker(server.baseUrl(), QStringLiteral("4.0"));
    Told told(checker);
    checker.check(true);
    waitUntilIdle(&checker);
    ASSERT_EQ(told.size(), 1);
    EXPECT_EQ(listing(QDir::currentPath(), true), hereBefore);
    // Other tests of a parallel run make their own temporary folders there meanwhile, so only
    // what a downloaded document could have been stored as counts.
    for (const QString& entry : listing(QStringLiteral("/tmp"), false)) {
        const bool couldBeTheDocument = entry.contains(QLatin1String("plist"), Qt::CaseInsensitive)
                                        || entry.contains(QLatin1String("version"), Qt::CaseInsensitive);
        if (couldBeTheDocument) {
            EXPECT_TRUE(tmpBefore.contains(entry)) << entry.toStdString();
        }
    }
}
