#pragma once

// A real one-node Slurm cluster for the cluster tests: munged, slurmctld and slurmd run in
// the foreground as children of the test, with their key, configuration, state and logs in
// a temporary folder and on free ports, so that test processes running side by side don't
// meet. The daemons stop with the object.

#include "oxSlurm.h"
#include "oxTestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <utility>
#include <string>
#include <vector>

class oxSlurmTestCluster {
public:
    oxSlurmTestCluster() = default;
    oxSlurmTestCluster(const oxSlurmTestCluster&) = delete;
    oxSlurmTestCluster& operator=(const oxSlurmTestCluster&) = delete;
    ~oxSlurmTestCluster()
    {
        // The node daemon goes first, so that it doesn't wait for the controller.
        for (auto it = m_daemons.rbegin(); it != m_daemons.rend(); ++it)
            stopDaemon(**it);
        oxSlurm::setConfigFile(std::string());
    }

    /// Starts the cluster with these partitions, each "NAME" or "NAME:STATE" (UP, DOWN:
    /// queued but never run, INACTIVE: refused); the first is the default. "" when it is up
    /// and its node idle, else why it can't run here.
    std::string start(const QStringList& partitions = {QStringLiteral("render")})
    {
        if (::geteuid() != 0)
            return "the Slurm daemons of the test cluster need root";
        for (const char* program : {"munged", "slurmctld", "slurmd", "sbatch"}) {
            if (findProgram(program).isEmpty())
                return std::string(program) + " isn't installed (scripts/install-deps.sh)";
        }
        const QString root = QString::fromStdString(m_dir.path());
        // munged checks that the folders of its socket can be entered by everyone.
        ::chmod(m_dir.path().c_str(), 0755);
        for (const char* folder : {"munge", "state", "spool", "log"})
            QDir(root).mkpath(QString::fromLatin1(folder));
        const QString key = root + "/munge/munge.key";
        QFile keyFile(key);
        if (!keyFile.open(QIODevice::WriteOnly))
            return "the munge key can't be written";
        QFile random(QStringLiteral("/dev/urandom"));
        random.open(QIODevice::ReadOnly);
        keyFile.write(random.read(1024));
        keyFile.close();
        keyFile.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);

        const QString socket = root + "/munge/socket";
        launch(QStringLiteral("munged"),
               {"-F", "-f", "--socket=" + socket, "--key-file=" + key,
                "--log-file=" + root + "/log/munged.log", "--pid-file=" + root + "/munge/pid",
                "--seed-file=" + root + "/munge/seed"});
        if (!waitFor([&] { return QFile::exists(socket); }, 10000))
            return "munged didn't start: " + log("munged");

        const std::pair<int, int> ports = freePorts();
        const QString host = shortHostName();
        m_config = root + "/slurm.conf";
        QFile config(m_config);
        config.open(QIODevice::WriteOnly);
        QString text =
            QStringLiteral("ClusterName=oxtest\nSlurmctldHost=%1\nSlurmctldPort=%2\n"
                           "SlurmdPort=%3\nAuthType=auth/munge\nAuthInfo=socket=%4\n"
                           "CredType=cred/munge\nSlurmUser=root\nSlurmdUser=root\n"
                           "StateSaveLocation=%5/state\nSlurmdSpoolDir=%5/spool\n"
                           "SlurmctldPidFile=%5/slurmctld.pid\nSlurmdPidFile=%5/slurmd.pid\n"
                           "SlurmctldLogFile=%5/log/slurmctld.log\n"
                           "SlurmdLogFile=%5/log/slurmd.log\n"
                           "ProctrackType=proctrack/linuxproc\nTaskPlugin=task/none\n"
                           "JobCompType=jobcomp/filetxt\nJobCompLoc=%5/log/jobcomp.txt\n"
                           "SelectType=select/cons_tres\nSelectTypeParameters=CR_Core\n"
                           "ReturnToService=2\nMpiDefault=none\nSchedulerParameters="
                           "sched_interval=1\nNodeName=%1 CPUs=%6 State=UNKNOWN\n")
                .arg(host)
                .arg(ports.first)
                .arg(ports.second)
                .arg(socket, root)
                .arg(QThread::idealThreadCount());
        for (int i = 0; i < partitions.size(); ++i)
            text += QStringLiteral("PartitionName=%1 Nodes=%2 Default=%3 MaxTime=INFINITE "
                                   "State=%4\n")
                        .arg(partitions[i].section(':', 0, 0), host, i == 0 ? "YES" : "NO",
                             partitions[i].section(':', 1, 1).isEmpty()
                                 ? QStringLiteral("UP")
                                 : partitions[i].section(':', 1, 1));
        config.write(text.toUtf8());
        config.close();
        oxSlurm::setConfigFile(m_config.toStdString());

        m_controller = launch(QStringLiteral("slurmctld"), {"-D", "-i", "-f", m_config});
        launch(QStringLiteral("slurmd"), {"-D", "-f", m_config});
        std::string problem;
        if (!waitFor([&] { return oxSlurm::ping(problem); }, 15000))
            return "slurmctld didn't come up (" + problem + "): " + log("slurmctld");
        if (!waitFor(
                [&] {
                    const oxSlurm::Result nodes = oxSlurm::run(
                        QStringLiteral("sinfo"),
                        {QStringLiteral("-h"), QStringLiteral("-o"), QStringLiteral("%t")});
                    return nodes.ok && nodes.out.find("idle") != std::string::npos;
                },
                15000))
            return "slurmd didn't register its node: " + log("slurmd");
        return std::string();
    }

    /// Stops the controller (the node daemon stays).
    void stopController()
    {
        if (m_controller)
            stopDaemon(*m_controller);
    }

    /// Polls condition, letting the event loop run, until it holds or timeoutMs pass.
    static bool waitFor(const std::function<bool()>& condition, int timeoutMs)
    {
        QElapsedTimer clock;
        clock.start();
        while (!condition()) {
            if (clock.elapsed() > timeoutMs)
                return false;
            QCoreApplication::processEvents();
            QThread::msleep(100);
        }
        return true;
    }

    std::string folder() const { return m_dir.path(); }

private:
    static QString findProgram(const char* program)
    {
        for (const char* folder : {"/usr/sbin/", "/usr/bin/", "/sbin/", "/bin/"}) {
            const QString path = QString::fromLatin1(folder) + program;
            if (QFile::exists(path))
                return path;
        }
        return QString();
    }
    // Two ports nobody listens on, held together while asked so that they differ.
    static std::pair<int, int> freePorts()
    {
        int ports[2] = {0, 0};
        int sockets[2] = {-1, -1};
        for (int i = 0; i < 2; ++i) {
            sockets[i] = ::socket(AF_INET, SOCK_STREAM, 0);
            sockaddr_in address{};
            address.sin_family = AF_INET;
            socklen_t length = sizeof(address);
            ::bind(sockets[i], reinterpret_cast<sockaddr*>(&address), sizeof(address));
            ::getsockname(sockets[i], reinterpret_cast<sockaddr*>(&address), &length);
            ports[i] = ntohs(address.sin_port);
        }
        ::close(sockets[0]);
        ::close(sockets[1]);
        return {ports[0], ports[1]};
    }
    static QString shortHostName()
    {
        char name[256] = {};
        ::gethostname(name, sizeof(name) - 1);
        return QString::fromLocal8Bit(name).section('.', 0, 0);
    }
    QProcess* launch(const QString& program, const QStringList& arguments)
    {
        auto process = std::make_unique<QProcess>();
        process->setProcessChannelMode(QProcess::MergedChannels);
        process->setStandardOutputFile(QString::fromStdString(m_dir.path()) + "/log/" + program +
                                       ".out");
        process->start(findProgram(program.toLatin1().constData()), arguments);
        process->waitForStarted(5000);
        m_daemons.push_back(std::move(process));
        return m_daemons.back().get();
    }
    static void stopDaemon(QProcess& process)
    {
        if (process.state() == QProcess::NotRunning)
            return;
        process.terminate();
        if (!process.waitForFinished(10000)) {
            process.kill();
            process.waitForFinished(5000);
        }
    }
    std::string log(const char* daemon) const
    {
        return oxReadFile(m_dir.path() + "/log/" + daemon + ".out");
    }

    oxTempDir m_dir;
    QString m_config;
    QProcess* m_controller = nullptr;
    std::vector<std::unique_ptr<QProcess>> m_daemons;
};
