// The pane, driven through the headless settings host with the demo configuration
// application and its real helper processes.
#include "PaneHostTesting.h"

#include <QFile>
#include <QRegularExpression>

#include <chrono>
#include <thread>

namespace spindeck::test {
namespace {

const QString kPane = SPINDECK_PANE;
const QString kFaultyPane = SPINDECK_FAULTY_PANE;

const QString kStartTitle = "Start Vemora spindeck";
const QString kStopTitle = "Stop Vemora spindeck";
const QString kStoppedStatus = "Vemora spindeck is disabled. Click the button to enable it.";
const QString kRunningStatus = "Vemora spindeck is enabled. Click the button to disable it.";

void RemoveKey(const QString& inStrings, const QString& inKey)
{
    QFile file(inStrings);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString text = QString::fromUtf8(file.readAll());
    file.close();
    text.remove(QRegularExpression("^\"" + QRegularExpression::escape(inKey) + "\" = [^\\n]*\\n",
                                   QRegularExpression::MultilineOption));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text.toUtf8());
}

TEST(KestrelPrefPane, SelectingLaunchesTheApplicationThenShowsTheStoppedHelperAndLeavesAtOnce)
{
    PaneInstallation installation(kPane, true);
    HostRun run = installation.Run({"--print", "--unselect"});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    ASSERT_EQ(run.shown.size(), 3u);
    const Shown& selected = run.shown[0];
    EXPECT_EQ(selected.Button(), kStartTitle);
    EXPECT_TRUE(selected.Enabled());
    EXPECT_EQ(selected.Status(), kStoppedStatus);
    EXPECT_FALSE(selected.HasSheet());
    EXPECT_LT(selected.NextTimer(), 0);
    // The configuration application itself is running, and the helper is not.
    EXPECT_FALSE(installation.Programs().empty()) << run.errors.toStdString();
    EXPECT_FALSE(installation.HelperRuns());
    EXPECT_EQ(run.shown[1].Note(), "shouldUnselect answered NSUnselectNow");
    EXPECT_LT(run.shown[1].json["seconds"].toDouble() - selected.json["seconds"].toDouble(), 0.5);
}

TEST(KestrelPrefPane, MissingApplicationShowsTheSheetAndStillRefreshes)
{
    PaneInstallation installation(kPane, false);
    HostRun run = installation.Run({});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    const Shown& shown = run.shown.back();
    EXPECT_EQ(shown.SheetTitle(), "Vemora spindeck Not Found");
    // The text names the applications folder of the installation the pane was made for.
    QString folder = QDir::cleanPath(QFileInfo(kPane).absolutePath() + "/../application-bundles");
    EXPECT_EQ(shown.SheetMessage(), "Vemora spindeck was not found in your computer. \nPlease verify that Vemora "
                                    "spindeck is installed in " +
                                        folder + ".");
    // The refresh ran: the button (enabled in the interface file) is disabled, nothing found.
    EXPECT_FALSE(shown.Enabled());
    EXPECT_EQ(shown.Button(), "");

    // A pane without its own texts falls back to the built-in ones, exactly.
    for (const char* language : {"en", "de"})
        ASSERT_TRUE(
            QFile::remove(installation.Pane() + "/Contents/Resources/" + language + ".lproj/Localizable.strings"));
    HostRun bare = installation.Run({});
    EXPECT_EQ(bare.shown.back().SheetTitle(), "Vemora spindeck Not Found");
    EXPECT_EQ(bare.shown.back().SheetMessage(),
              "Vemora spindeck was not found in your computer. \nPlease verify that Vemora spindeck is installed in "
              "your Applications root folder.");
}

TEST(KestrelPrefPane, MissingKeyShowsTheKeyItself)
{
    PaneInstallation installation(kPane, true);
    RemoveKey(installation.Application() + "/Contents/Resources/en.lproj/Localizable.strings", "Start/StopBtn");
    HostRun run = installation.Run({});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    EXPECT_EQ(run.shown.back().Button(), "Start/StopBtn");
    EXPECT_EQ(run.shown.back().Status(), kStoppedStatus);
}

TEST(KestrelPrefPane, StartThenStopPollsEveryFiveSecondsUntilTheHelperIsGone)
{
    PaneInstallation installation(kPane, true);
    installation.Set("VEMORA_HELPER_QUIT_SECONDS", "7");
    HostRun run = installation.Run({"--click", "--print", "--wait", "0.5", "--click", "--print", "--wait", "4",
                                    "--print", "--wait", "1.5", "--print", "--wait", "5", "--print"});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    ASSERT_EQ(run.shown.size(), 6u);
    const Shown& started = run.shown[0];
    EXPECT_EQ(started.Button(), kStopTitle);
    EXPECT_TRUE(started.Enabled());
    EXPECT_EQ(started.Status(), kRunningStatus);
    EXPECT_LT(started.NextTimer(), 0) << "a successful start refreshes at once, without a timer";

    const Shown& stopping = run.shown[1];
    EXPECT_FALSE(stopping.Enabled());
    EXPECT_GT(stopping.NextTimer(), 4.0);
    EXPECT_LE(stopping.NextTimer(), 5.0);
    EXPECT_FALSE(run.shown[2].Enabled()) << "disabled until the first tick";

    // First tick: the helper takes 7 s to quit, so it still runs; the button is usable again.
    const Shown& firstTick = run.shown[3];
    EXPECT_TRUE(firstTick.Enabled());
    EXPECT_EQ(firstTick.Button(), kStopTitle);
    // The timer repeats; how far the next firing is depends on how late the host printed.
    EXPECT_GT(firstTick.NextTimer(), 0.0) << "the timer repeats";
    EXPECT_LE(firstTick.NextTimer(), 5.0);

    // Second tick: it is gone, and the timer ended itself.
    const Shown& secondTick = run.shown[4];
    EXPECT_EQ(secondTick.Button(), kStartTitle);
    EXPECT_EQ(secondTick.Status(), kStoppedStatus);
    EXPECT_TRUE(secondTick.Enabled());
    EXPECT_LT(secondTick.NextTimer(), 0);
    EXPECT_FALSE(installation.HelperRuns());
}

TEST(KestrelPrefPane, StartWithAFailingLaunchRunsTheTimerOnce)
{
    PaneInstallation installation(kPane, true);
    ASSERT_TRUE(QFile::setPermissions(installation.Helper(), QFile::ReadOwner | QFile::WriteOwner));
    HostRun run = installation.Run({"--click", "--print", "--wait", "5.5", "--print"});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    ASSERT_EQ(run.shown.size(), 3u);
    EXPECT_FALSE(run.shown[0].Enabled());
    EXPECT_GT(run.shown[0].NextTimer(), 4.0);
    EXPECT_LE(run.shown[0].NextTimer(), 5.0);
    EXPECT_EQ(run.shown[1].Button(), kStartTitle);
    EXPECT_TRUE(run.shown[1].Enabled());
    EXPECT_LT(run.shown[1].NextTimer(), 0);
}

TEST(KestrelPrefPane, FailuresOfTheServicesAreLoggedAndAbsorbed)
{
    PaneInstallation installation(kFaultyPane, true);
    struct Case {
        const char* fault;
        const char* logged;
    };
    for (Case c : {Case{"runtime", "Gx::RuntimeError during IsBackendRunning()"},
                   Case{"os", "An exception was thrown during IsBackendRunning()"}}) {
        installation.Set("KESTREL_BACKEND_FAULT", c.fault);
        HostRun run = installation.Run({});
        ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
        EXPECT_TRUE(run.errors.contains(
            QRegularExpression("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} panehost\\[\\d+\\] " +
                               QRegularExpression::escape(c.logged))))
            << run.errors.toStdString();
        // The not-running wording; the found flag set before the failure keeps the button usable.
        EXPECT_EQ(run.shown.back().Button(), kStartTitle) << c.fault;
        EXPECT_EQ(run.shown.back().Status(), kStoppedStatus) << c.fault;
        EXPECT_TRUE(run.shown.back().Enabled()) << c.fault;
    }

    installation.Set("KESTREL_BACKEND_FAULT", "toggle");
    HostRun run = installation.Run({"--click"});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    EXPECT_TRUE(run.errors.contains("An exception was thrown during toggleFBAHelper()")) << run.errors.toStdString();
    EXPECT_EQ(run.shown.back().SheetTitle(), "Vemora spindeck Not Found");
    EXPECT_FALSE(run.shown.back().Enabled());
    EXPECT_LT(run.shown.back().NextTimer(), 0);
}

TEST(KestrelPrefPane, GermanShowsTheTextsOfBothBundles)
{
    PaneInstallation installation(kPane, true);
    installation.Set("LANG", "de_DE.UTF-8");
    HostRun run = installation.Run({});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    EXPECT_EQ(run.shown.back().Button(), "Vemora spindeck starten");
    EXPECT_EQ(run.shown.back().Status(),
              "Vemora spindeck ist deaktiviert. Klicken Sie auf die Schaltfläche, um es zu aktivieren.");

    QProcess::execute("rm", {"-r", installation.Application()});
    HostRun missing = installation.Run({});
    EXPECT_EQ(missing.shown.back().SheetTitle(), "Vemora spindeck nicht gefunden");
    EXPECT_TRUE(
        missing.shown.back().SheetMessage().startsWith("Vemora spindeck wurde auf Ihrem Computer nicht gefunden. \n"));
}

}  // namespace
}  // namespace spindeck::test
