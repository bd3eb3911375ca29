// Runs the settings host headless on a pane inside a private installation: a temporary
// folder laid out as the installation is (lib/spindeck/preference-panes and
// application-bundles), with its own copy of the demo configuration application so that the
// helper processes of one test are never those of another, and a private HOME and XDG folders.
#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <csignal>
#include <sys/types.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace spindeck::test {

// One line of the host's --json output.
struct Shown {
    QJsonObject json;

    QString Button() const { return json["button"].toString(); }
    bool Enabled() const { return json["buttonEnabled"].toBool(); }
    QString Status() const { return json["status"].toString(); }
    bool HasSheet() const { return json["sheetTitle"].isString(); }
    QString SheetTitle() const { return json["sheetTitle"].toString(); }
    QString SheetMessage() const { return json["sheetMessage"].toString(); }
    // Seconds until the run loop's next timer, or a negative number when it has none.
    double NextTimer() const { return json["nextTimer"].isDouble() ? json["nextTimer"].toDouble() : -1; }
    QString Note() const { return json["note"].toString(); }
};

struct HostRun {
    int exitCode = -1;
    std::vector<Shown> shown;  // every report, in order
    QString errors;            // standard error
};

class PaneInstallation {
public:
    // inPane: the staged pane bundle to copy; inWithApplication: whether the configuration
    // application is installed beside it.
    PaneInstallation(const QString& inPane, bool inWithApplication)
    {
        QString lib = mRoot.filePath("lib/spindeck");
        QDir().mkpath(lib + "/preference-panes");
        QDir().mkpath(lib + "/application-bundles");
        mPane = lib + "/preference-panes/Vemora spindeck.prefPane";
        Copy(inPane, mPane);
        mApplication = lib + "/application-bundles/Vemora spindeck.app";
        if (inWithApplication)
            Copy(SPINDECK_DEMO_APP, mApplication);
        for (const char* folder : {"home", "config", "data", "cache", "state", "runtime"})
            QDir().mkpath(mRoot.filePath(folder));
        QFile::setPermissions(mRoot.filePath("runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        mEnvironment = QProcessEnvironment::systemEnvironment();
        mEnvironment.insert("HOME", mRoot.filePath("home"));
        mEnvironment.insert("XDG_CONFIG_HOME", mRoot.filePath("config"));
        mEnvironment.insert("XDG_DATA_HOME", mRoot.filePath("data"));
        mEnvironment.insert("XDG_CACHE_HOME", mRoot.filePath("cache"));
        mEnvironment.insert("XDG_STATE_HOME", mRoot.filePath("state"));
        mEnvironment.insert("XDG_RUNTIME_DIR", mRoot.filePath("runtime"));
        mEnvironment.insert("LANG", "en_US.UTF-8");
        mEnvironment.remove("LANGUAGE");
        mEnvironment.remove("LC_ALL");
        mEnvironment.remove("LC_MESSAGES");
    }

    ~PaneInstallation() { StopPrograms(); }

    const QString& Pane() const { return mPane; }
    const QString& Application() const { return mApplication; }
    QString Helper() const
    {
        return mApplication + "/Contents/MacOS/Vemora spindeck Helper.app/Contents/MacOS/Vemora spindeck Helper";
    }
    void Set(const QString& inName, const QString& inValue) { mEnvironment.insert(inName, inValue); }

    HostRun Run(const QStringList& inActions)
    {
        QProcess host;
        host.setProcessEnvironment(mEnvironment);
        host.start(SPINDECK_PANEHOST, QStringList{"--headless", "--json", "--pane", mPane} + inActions);
        HostRun run;
        if (!host.waitForFinished(90'000)) {
            host.kill();
            host.waitForFinished();
        }
        run.exitCode = host.exitStatus() == QProcess::NormalExit ? host.exitCode() : -1;
        run.errors = QString::fromUtf8(host.readAllStandardError());
        for (const QByteArray& line : host.readAllStandardOutput().split('\n'))
            if (!line.isEmpty())
                run.shown.push_back({QJsonDocument::fromJson(line).object()});
        return run;
    }

    // The processes whose program lies in this installation: the configuration application
    // and its helpers, started by the pane.
    std::vector<pid_t> Programs() const
    {
        std::vector<pid_t> found;
        QString root = QDir(mRoot.path()).canonicalPath() + "/";
        for (const QString& entry : QDir("/proc").entryList(QDir::Dirs)) {
            bool number = false;
            pid_t pid = entry.toInt(&number);
            if (number && QFile::symLinkTarget("/proc/" + entry + "/exe").startsWith(root))
                found.push_back(pid);
        }
        return found;
    }
    bool HelperRuns() const
    {
        QString helper = QFileInfo(Helper()).canonicalFilePath();
        for (pid_t pid : Programs())
            if (QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(pid)) == helper)
                return true;
        return false;
    }
    void StopPrograms() const
    {
        for (pid_t pid : Programs())
            ::kill(pid, SIGKILL);
    }

private:
    static void Copy(const QString& inFrom, const QString& inTo)
    {
        ASSERT_EQ(QProcess::execute("cp", {"-a", inFrom, inTo}), 0) << inFrom.toStdString();
    }

    QTemporaryDir mRoot;
    QString mPane;
    QString mApplication;
    QProcessEnvironment mEnvironment;
};

}  // namespace spindeck::test
