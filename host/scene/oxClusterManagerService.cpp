#include "oxClusterManagerService.h"

#include "oxCallTrace.h"
#include "oxController.h"
#include "oxFile.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxPlatform.h"
#include "oxPreferences.h"
#include "oxScene.h"
#include "oxSceneIO.h"
#include "oxSlurm.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

namespace {

// Job folders are hidden under this prefix until they are complete.
const char kPartialPrefix[] = ".partial-";
// The callback of the render settings plug-in that lists (and counts the tasks of) a job.
const char kListCallback[] = "oxMovieExport::listOutputFiles";
const char kRenderCallback[] = "oxMovieExport::renderOutputFiles";
// How long a submission may take before it counts as lost.
const int kSubmitTimeoutMs = 30000;
// How much of a failed task's log is shown.
const int kLogTailLines = 6;

QString toQ(const std::string& text) { return QString::fromStdString(text); }

std::string preference(const char* key)
{
    std::string value;
    oxPreferences::getData().get(key, value);
    return value;
}

bool readRecord(const std::string& file, oxMessage& record)
{
    return oxMessageRW::read(record, file.c_str(), std::string());
}

// The last lines of a text file ("" when it can't be read).
std::string logTail(const QString& file)
{
    QFile log(file);
    if (!log.open(QIODevice::ReadOnly))
        return std::string();
    QStringList lines = QString::fromUtf8(log.readAll()).trimmed().split('\n');
    while (lines.size() > kLogTailLines)
        lines.removeFirst();
    return lines.join('\n').toStdString();
}

} // namespace

oxClusterManagerService::oxClusterManagerService()
{
    const std::string folder = preference(kJobFolderPreference);
    setJobFolder(folder.empty()
                     ? QDir::home().filePath(QStringLiteral("oxlin-cluster-jobs")).toStdString()
                     : folder);
    const std::string config = preference(kSlurmConfigPreference);
    if (!config.empty())
        oxSlurm::setConfigFile(oxFile::expandFilename(config));
    m_program = preference(kRenderProgramPreference);
}

void oxClusterManagerService::setJobFolder(const std::string& folder)
{
    m_jobFolder = QDir(toQ(oxFile::expandFilename(folder))).absolutePath().toStdString();
}

void oxClusterManagerService::setRenderProgram(const std::string& program) { m_program = program; }

std::string oxClusterManagerService::getRenderProgram() const
{
    if (!m_program.empty())
        return m_program;
    const QString beside = QDir(QCoreApplication::applicationDirPath()).filePath("oxlin");
    return QFileInfo(beside).isExecutable() ? beside.toStdString() : std::string("oxlin");
}

bool oxClusterManagerService::isLoggedIn()
{
    std::string problem;
    if (oxSlurm::ping(problem)) {
        m_loginProblem.clear();
        return true;
    }
    if (problem != m_loginProblem)
        oxLog::warning("Cluster manager: logged out, no Slurm controller answers (%s). Check "
                       "that slurmctld runs and that SLURM_CONF or the preference \"%s\" names "
                       "its configuration.",
                       problem.c_str(), kSlurmConfigPreference);
    m_loginProblem = problem;
    return false;
}

QStringList oxClusterManagerService::getQueueNames()
{
    return isLoggedIn() ? oxSlurm::partitions() : QStringList();
}

bool oxClusterManagerService::createRenderJob(void* /*reserved*/, const QString& queueName)
{
    oxCallTrace::record("oxClusterManagerService::createRenderJob", queueName.toStdString());
    if (!isLoggedIn()) {
        oxLog::error("Can't create a cluster job: logged out (%s).", m_loginProblem.c_str());
        return false;
    }
    if (!queueName.isEmpty() && !oxSlurm::partitions().contains(queueName)) {
        oxLog::error("Can't create a cluster job: the cluster has no queue (partition) '%s'.",
                     queueName.toUtf8().constData());
        return false;
    }
    return writeAndSubmit(queueName);
}

bool oxClusterManagerService::writeAndSubmit(const QString& queueName)
{
    // What the job renders: its files and how many tasks they split into.
    oxMessage plan;
    plan.set(kFramesPerTaskKey, 1);
    if (!oxController::call(kListCallback, plan, 0)) {
        oxLog::error("Can't create a cluster job: the Render Settings plug-in, which lists "
                     "the job's files, isn't loaded.");
        return false;
    }
    std::vector<std::string> files;
    plan.get(kFilesKey, files);
    int taskCount = 0;
    plan.get(kTaskCountKey, taskCount);
    std::string hosts;
    plan.get("clusterHosts", hosts);
    if (files.empty() || taskCount <= 0) {
        oxLog::error("Can't create a cluster job: the render settings give no file to write "
                     "(check the output file name).");
        return false;
    }

    QStringList hostLimit;
    std::string problem;
    if (!oxSlurm::addHostLimit(hosts, hostLimit, problem)) {
        oxLog::error("Can't create a cluster job: %s (check the cluster hosts of the render "
                     "settings).",
                     problem.c_str());
        return false;
    }

    ++m_jobCount;
    const QDateTime now = QDateTime::currentDateTime();
    const QString name = QStringLiteral("job-%1-%2-%3")
                             .arg(now.toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")))
                             .arg(::getpid())
                             .arg(m_jobCount);
    QDir jobs(toQ(m_jobFolder));
    const QString partial = jobs.filePath(kPartialPrefix + name);
    const QString final = jobs.filePath(name);
    auto fail = [&](const QString& folder, const std::string& what) {
        QDir(folder).removeRecursively();
        oxLog::error("Can't create a cluster job in '%s': %s.", m_jobFolder.c_str(), what.c_str());
        return false;
    };
    if (!jobs.mkpath(partial) || !QDir(partial).mkpath(kTaskFolder) ||
        !QDir(partial).mkpath(kLogFolder))
        return fail(partial, "the job folder can't be created (check the folder's permissions)");

    // The job takes a copy of the scene; the open scene keeps its own file names and state.
    oxScene& scene = oxScene::current();
    const std::string sourceFile = scene.fileName;
    const std::string sourceModel = scene.modelFile;
    const bool modified = oxController::isModified();
    const bool saved = oxSceneIO::save(QDir(partial).filePath(kJobSceneFile).toStdString());
    scene.fileName = sourceFile;
    scene.modelFile = sourceModel;
    oxController::setModified(modified);
    if (!saved)
        return fail(partial, "the scene state can't be written");

    oxMessage job;
    job.addAttribute("version", "1");
    job.set("queue", queueName.toStdString());
    job.set("scene", std::string(kJobSceneFile));
    job.set("source", sourceFile);
    job.set("created", now.toString(Qt::ISODateWithMs).toStdString());
    job.set("host", oxPlatform::getAppVersionName().toStdString());
    job.set(kFramesPerTaskKey, 1);
    job.set(kTaskCountKey, taskCount);
    job.set(kFilesKey, files);
    const std::string record = QDir(final).filePath(kJobRecordFile).toStdString();
    if (!oxMessageRW::write(job, QDir(partial).filePath(kJobRecordFile).toUtf8().constData()))
        return fail(partial, "the job record can't be written");
    if (!QDir().rename(partial, final))
        return fail(partial, "the finished job folder can't be renamed");

    // One array for the whole job: task N renders the N-th part of the job's files.
    const std::string command =
        oxSlurm::shellQuoted(getRenderProgram()) + " --no-gui " +
        oxSlurm::shellQuoted(QDir(final).filePath(kJobSceneFile).toStdString()) + " --render-job " +
        oxSlurm::shellQuoted(record) + " --task $SLURM_ARRAY_TASK_ID";
    QStringList arguments{
        QStringLiteral("--parsable"),
        QStringLiteral("--array=0-%1").arg(taskCount - 1),
        QStringLiteral("--job-name=oxlin-%1").arg(name),
        QStringLiteral("--chdir=%1").arg(final),
        QStringLiteral("--output=%1").arg(QDir(final).filePath(kLogFolder) + "/task-%a.log"),
        QStringLiteral("--wrap=%1").arg(toQ(command))};
    if (!queueName.isEmpty())
        arguments << QStringLiteral("--partition=%1").arg(queueName);
    arguments << hostLimit;
    const oxSlurm::Result submitted =
        oxSlurm::run(QStringLiteral("sbatch"), arguments, kSubmitTimeoutMs);
    if (submitted.timedOut) {
        // The controller may have queued it all the same: a job without its folder must not
        // run.
        oxSlurm::run(QStringLiteral("scancel"), {QStringLiteral("--name=oxlin-%1").arg(name)});
        return fail(final, "Slurm gave no answer to the submission within " +
                               std::to_string(kSubmitTimeoutMs / 1000) +
                               " s (the controller is busy or unreachable; try again)");
    }
    if (!submitted.ok)
        return fail(final, "Slurm refused the job (" + submitted.problem() + ")");
    // "--parsable" answers "id" or "id;cluster".
    const std::string id = submitted.out.substr(0, submitted.out.find_first_of(";\n"));
    job.set(kJobIdKey, id);
    if (!oxMessageRW::write(job, record.c_str())) {
        oxSlurm::run(QStringLiteral("scancel"), {toQ(id)});
        return fail(final, "the job record can't take the Slurm job id");
    }
    m_lastJob = final.toStdString();
    m_jobs.push_back(m_lastJob);
    oxLog::info("Created cluster job '%s': Slurm job %s, %d task%s.", m_lastJob.c_str(), id.c_str(),
                taskCount, taskCount == 1 ? "" : "s");
    return true;
}

oxClusterManagerService::JobStatus
oxClusterManagerService::getJobStatus(const std::string& folder) const
{
    JobStatus status;
    status.folder = folder;
    oxMessage job;
    if (!readRecord(QDir(toQ(folder)).filePath(kJobRecordFile).toStdString(), job))
        return status;
    job.get(kJobIdKey, status.id);
    job.get(kTaskCountKey, status.tasksTotal);
    const QDir tasks(QDir(toQ(folder)).filePath(kTaskFolder));
    std::vector<int> unfinished;
    std::vector<int> failed;
    for (int task = 0; task < status.tasksTotal; ++task) {
        if (tasks.exists(QStringLiteral("%1.done").arg(task)))
            ++status.tasksDone;
        else if (tasks.exists(QStringLiteral("%1.failed").arg(task)))
            failed.push_back(task);
        else
            unfinished.push_back(task);
    }
    const oxSlurm::ArrayState array = oxSlurm::arrayState(status.id);
    if (QFileInfo::exists(QDir(toQ(folder)).filePath(kCancelledFile)))
        status.state = JobState::Cancelled;
    else if (array.known)
        status.state = array.running > 0 || status.tasksDone > 0 || !failed.empty()
                           ? JobState::Running
                           : JobState::Pending;
    else if (failed.empty() && unfinished.empty())
        status.state = JobState::Completed;
    else {
        // Tasks that left no result were stopped by Slurm (time limit, node failure).
        failed.insert(failed.end(), unfinished.begin(), unfinished.end());
        status.state = JobState::Failed;
    }
    if (status.state == JobState::Failed) {
        for (int task : failed) {
            const QString log =
                QDir(QDir(toQ(folder)).filePath(kLogFolder)).filePath("task-%1.log").arg(task);
            status.failure += "Task " + std::to_string(task) + ":\n" + logTail(log) + "\n";
        }
    }
    return status;
}

bool oxClusterManagerService::cancelJob(const std::string& folder)
{
    oxCallTrace::record("oxClusterManagerService::cancelJob", folder);
    const JobStatus status = getJobStatus(folder);
    if (status.id.empty()) {
        oxLog::error("Can't cancel the cluster job '%s': its record names no Slurm job.",
                     folder.c_str());
        return false;
    }
    const oxSlurm::Result result = oxSlurm::run(QStringLiteral("scancel"), {toQ(status.id)});
    if (!result.ok) {
        oxLog::error("Can't cancel the cluster job '%s' (Slurm job %s): %s.", folder.c_str(),
                     status.id.c_str(), result.problem().c_str());
        return false;
    }
    std::string error;
    oxFile::writeAtomically(QDir(toQ(folder)).filePath(kCancelledFile).toStdString(),
                            QDateTime::currentDateTime().toString(Qt::ISODate).toStdString(),
                            &error);
    oxLog::info("Cancelled the cluster job '%s' (Slurm job %s).", folder.c_str(),
                status.id.c_str());
    return true;
}

int oxClusterManagerService::runTask(const std::string& jobFile, int task)
{
    oxMessage job;
    if (!readRecord(jobFile, job)) {
        oxLog::error("Can't render task %d: the job record '%s' can't be read (%s).", task,
                     jobFile.c_str(), oxMessageRW::lastError().c_str());
        return 1;
    }
    int framesPerTask = 1;
    job.get(kFramesPerTaskKey, framesPerTask);
    oxMessage render;
    render.set("task", task);
    render.set(kFramesPerTaskKey, framesPerTask);
    // A task that runs again (requeued by Slurm) replaces what it wrote before.
    render.set("overwrite", true);
    std::string error;
    if (!oxController::call(kRenderCallback, render, 0))
        error = "the Render Settings plug-in isn't loaded";
    else
        render.get("error", error);
    std::vector<std::string> files;
    render.get(kFilesKey, files);
    const QDir tasks(QDir(QFileInfo(toQ(jobFile)).absolutePath()).filePath(kTaskFolder));
    std::string result;
    for (const std::string& file : files)
        result += file + "\n";
    const QString marker = tasks.filePath(QStringLiteral("%1.%2").arg(task).arg(
        error.empty() ? QStringLiteral("done") : QStringLiteral("failed")));
    std::string writeError;
    oxFile::writeAtomically(marker.toStdString(), error.empty() ? result : error + "\n",
                            &writeError);
    if (!error.empty()) {
        oxLog::error("Task %d of '%s' failed: %s.", task, jobFile.c_str(), error.c_str());
        return 1;
    }
    oxLog::info("Task %d of '%s' wrote %zu file%s.", task, jobFile.c_str(), files.size(),
                files.size() == 1 ? "" : "s");
    return 0;
}
