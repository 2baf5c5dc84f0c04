#include "cli/CliOutput.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <cstdio>

namespace pelorin::cli {
namespace {

// Captures what the reporter prints on each stream.
struct Captured {
    Captured() : out(std::tmpfile()), err(std::tmpfile()) {}
    ~Captured()
    {
        std::fclose(out);
        std::fclose(err);
    }
    static QString read(std::FILE* f)
    {
        std::fflush(f);
        std::rewind(f);
        QByteArray bytes;
        char buffer[4096];
        while (size_t n = std::fread(buffer, 1, sizeof buffer, f))
            bytes.append(buffer, static_cast<qsizetype>(n));
        return QString::fromLocal8Bit(bytes);
    }
    std::FILE* out;
    std::FILE* err;
};

CommandResult sampleResult()
{
    CommandResult result;
    result.addWritten(QStringLiteral("/store/a.jpg"));
    result.addWritten(QStringLiteral("/store/b.jpg"));
    result.skip(QStringLiteral("/in/c.crw"), QStringLiteral("cannot remove metadata from CRW files"));
    result.noteOnce(QStringLiteral("creation dates were not set"));
    return result;
}

TEST(CliReporter, TextShowsEachOutputOnceAndReasonsOnStderr)
{
    Captured io;
    CliInvocation invocation;
    invocation.out = io.out;
    invocation.err = io.err;
    CliReporter reporter(invocation);
    const RevealHook hook = reporter.revealHook();
    hook.reveal(QStringLiteral("/store/a.jpg"));
    hook.reveal(QStringLiteral("/store/a.jpg"));
    EXPECT_EQ(reporter.report(sampleResult()), ExitItemFailed);
    EXPECT_EQ(Captured::read(io.out), QStringLiteral("/store/a.jpg\n/store/b.jpg\n"));
    const QString err = Captured::read(io.err);
    EXPECT_TRUE(err.contains(QStringLiteral("skipped /in/c.crw: cannot remove metadata from CRW files")));
    EXPECT_TRUE(err.contains(QStringLiteral("note: creation dates were not set")));
}

TEST(CliReporter, JsonHoldsEverythingAndAlertsAreUsageErrors)
{
    Captured io;
    CliInvocation invocation;
    invocation.out = io.out;
    invocation.err = io.err;
    invocation.json = true;
    CliReporter reporter(invocation);
    reporter.revealHook().reveal(QStringLiteral("/store/a.jpg"));
    CommandResult result = sampleResult();
    result.alert = Alerts::invalidDateFormat();
    EXPECT_EQ(reporter.report(result), ExitUsage);
    const QJsonObject object = QJsonDocument::fromJson(Captured::read(io.out).toUtf8()).object();
    EXPECT_EQ(object[QStringLiteral("written")].toArray().size(), 2);
    EXPECT_EQ(object[QStringLiteral("skipped")].toArray()[0].toObject()[QStringLiteral("reason")].toString(),
              QStringLiteral("cannot remove metadata from CRW files"));
    EXPECT_EQ(object[QStringLiteral("alert")].toObject()[QStringLiteral("message")].toString(),
              QStringLiteral("Invalid date format"));
    EXPECT_TRUE(Captured::read(io.err).isEmpty());

    Captured clean;
    invocation.out = clean.out;
    EXPECT_EQ(CliReporter(invocation).report(CommandResult{}), ExitSuccess);
}

}  // namespace
}  // namespace pelorin::cli
