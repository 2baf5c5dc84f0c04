#include "camera/CameraHotplug.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

void runEventsFor(int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

TEST(CameraHotplug, BurstsOfDeviceEventsBecomeOneSignal)
{
    int argc = 1;
    char name[] = "camera_tests";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    CameraHotplug hotplug;
    hotplug.isWatching();  // either answer is fine here; constructing must not fail
    hotplug.setCollapseInterval(100);
    int signals_ = 0;
    QObject::connect(&hotplug, &CameraHotplug::devicesMayHaveChanged, [&] { ++signals_; });

    for (int i = 0; i < 5; ++i)
        hotplug.noteDeviceChange();
    EXPECT_EQ(signals_, 0);  // not before the interval
    runEventsFor(400);
    EXPECT_EQ(signals_, 1);

    hotplug.noteDeviceChange();
    runEventsFor(400);
    EXPECT_EQ(signals_, 2);
}

}  // namespace
}  // namespace pelorin
