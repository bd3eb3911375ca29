// The settings host's own behaviour: its command line, and the pictures it saves of a pane.
#include "PaneHostTesting.h"

#include <QImage>
#include <QRegularExpression>

namespace spindeck::test {
namespace {

TEST(PaneHost, ScreenshotsOfTheRunningAndStoppedPaneAreImagesOfTheViewThatDiffer)
{
    PaneInstallation installation(SPINDECK_PANE, true);
    QTemporaryDir pictures;
    QString stopped = pictures.filePath("stopped.png");
    QString running = pictures.filePath("running.png");
    HostRun run = installation.Run({"--screenshot", stopped, "--click", "--screenshot", running, "--click"});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    ASSERT_EQ(run.shown.size(), 3u);
    QImage images[] = {QImage(stopped, "PNG"), QImage(running, "PNG")};
    for (std::size_t i = 0; i < 2; ++i) {
        QRegularExpressionMatch size = QRegularExpression("of (\\d+)x(\\d+) saved").match(run.shown[i].Note());
        ASSERT_TRUE(size.hasMatch()) << run.shown[i].Note().toStdString();
        ASSERT_FALSE(images[i].isNull());
        EXPECT_EQ(images[i].width(), size.captured(1).toInt());
        EXPECT_EQ(images[i].height(), size.captured(2).toInt());
        // Never smaller than the interface file's minimum size.
        EXPECT_GE(images[i].width(), 595);
        EXPECT_GE(images[i].height(), 160);
    }
    EXPECT_NE(images[0], images[1]);
}

TEST(PaneHost, CommandLineMistakesAndUnloadablePanesAreReported)
{
    struct Case {
        QStringList arguments;
        int exitCode;
        const char* said;
    };
    QTemporaryDir empty;
    for (const Case& c : {Case{{"--help"}, 0, ""}, Case{{"--frobnicate"}, 2, "unknown option"},
                          Case{{"--headless"}, 2, "--headless needs --pane"}, Case{{"--click"}, 2, "need --headless"},
                          Case{{"--headless", "--pane", "x", "--wait", "soon"}, 2, "number of seconds"},
                          Case{{"--headless", "--pane", empty.path()}, 1, "names no NSPrincipalClass"}}) {
        QProcess host;
        host.start(SPINDECK_PANEHOST, c.arguments);
        ASSERT_TRUE(host.waitForFinished(30'000));
        EXPECT_EQ(host.exitCode(), c.exitCode) << c.arguments.join(' ').toStdString();
        EXPECT_TRUE(QString::fromUtf8(host.readAllStandardError()).contains(c.said)) << c.said;
        if (c.exitCode == 0) {
            EXPECT_TRUE(QString::fromUtf8(host.readAllStandardOutput()).contains("--screenshot FILE"));
        }
    }
}

}  // namespace
}  // namespace spindeck::test
