#include "update/VersionCompare.h"

#include <gtest/gtest.h>

using namespace pelorin;

TEST(VersionCompare, PartsCompareAsNumbersAndOddTextCountsAsZero)
{
    struct Case {
        const char* a;
        const char* b;
        int order;  // of a against b
    };
    const Case cases[] = {
        {"1.3", "1.2.10", 1}, {"1.10", "1.9", 1},  {"1.2", "1.2.0", 0},   {"01.002", "1.2", 0}, {" 1.4 ", "1.4", 0},
        {"1.2.1", "1.2", 1},  {"", "0.0.1", -1},   {"abc", "0", 0},       {"1.x.2", "1.0.1", 1}, {"1..2", "1.0.2", 0},
        {"1.2b", "1.0", 0},   {"v2", "1", -1},     {"1.-2", "1", 0},      {"１.２", "0", 0},
        // Parts beyond any integer type still compare by value.
        {"1.99999999999999999999999999", "1.99999999999999999999999998", 1},
        {"1.100000000000000000000", "1.99999999999999999999", 1},
    };
    for (const Case& c : cases) {
        const QString a = QString::fromUtf8(c.a), b = QString::fromUtf8(c.b);
        EXPECT_EQ(compareVersions(a, b), c.order) << c.a << " vs " << c.b;
        // Antisymmetry: otherwise a downgrade could be offered as an update.
        EXPECT_EQ(compareVersions(b, a), -c.order) << c.b << " vs " << c.a;
        EXPECT_EQ(isNewerVersion(a, b), c.order > 0) << c.a << " vs " << c.b;
    }
    EXPECT_TRUE(isNewerVersion(QStringLiteral("7.").repeated(20000), QStringLiteral("7.7")));
    EXPECT_FALSE(isNewerVersion(QString(50000, u'.'), QStringLiteral("0")));
}
