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

#include <QDateTime>
#include <QDir>

#include <algorithm>

#include <unistd.h>

namespace {

// Job folders are hidden under this prefix until they are complete.
const char kPartialPrefix[] = ".partial-";

QString toQ(const std::string& text) { return QString::fromStdString(text); }

} // namespace

oxClusterManagerService::oxClusterManagerService()
{
    std::string folder;
    if (oxPreferences::getData().get(kSpoolPreference, folder) && !folder.empty())
        login(folder);
}

bool oxClusterManagerService::login(const std::string& folder)
{
    oxCallTrace::record("oxClusterManagerService::login", folder);
    const std::string path = oxFile::expandFilename(folder);
    if (path.empty() || !oxFile::createPath(path)) {
        oxLog::error("Can't use '%s' as the cluster spool folder: it can't be created (check the "
                     "path and its permissions).",
                     folder.c_str());
        return false;
    }
    m_spool = QDir(toQ(path)).absolutePath().toStdString();
    return true;
}

void oxClusterManagerService::logout()
{
    oxCallTrace::record("oxClusterManagerService::logout");
    m_spool.clear();
}

bool oxClusterManagerService::isLoggedIn() { return !m_spool.empty(); }

QStringList oxClusterManagerService::getQueueNames()
{
    if (m_spool.empty())
        return {};
    QStringList queues =
        QDir(toQ(m_spool))
            .entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::IgnoreCase);
    // Queues are the visible folders; job folders of the spool folder itself are no queues.
    queues.erase(std::remove_if(queues.begin(), queues.end(),
                                [](const QString& name) {
                                    return name.startsWith('.') || name.startsWith("job-");
                                }),
                 queues.end());
    return queues;
}

bool oxClusterManagerService::createRenderJob(void* /*reserved*/, const QString& queueName)
{
    oxCallTrace::record("oxClusterManagerService::createRenderJob", queueName.toStdString());
    if (!isLoggedIn()) {
        oxLog::error("Can't create a cluster job: not logged in to a cluster spool folder (set the "
                     "preference \"%s\" or start oxlin with --cluster-spool DIR).",
                     kSpoolPreference);
        return false;
    }
    const QStringList queues = getQueueNames();
    QString queue = queueName;
    if (queue.isEmpty() && queues.size() == 1)
        queue = queues.first();
    if (queue.isEmpty() && queues.size() > 1) {
        oxLog::error("Can't create a cluster job: the spool folder '%s' has %d queues; name one.",
                     m_spool.c_str(), int(queues.size()));
        return false;
    }
    if (!queue.isEmpty() && !queues.contains(queue)) {
        oxLog::error("Can't create a cluster job: the spool folder '%s' has no queue '%s'.",
                     m_spool.c_str(), queue.toUtf8().constData());
        return false;
    }
    const std::string folder =
        queue.isEmpty() ? m_spool : QDir(toQ(m_spool)).filePath(queue).toStdString();
    return writeJob(folder, queue);
}

bool oxClusterManagerService::writeJob(const std::string& queueFolder, const QString& queueName)
{
    ++m_jobCount;
    const QDateTime now = QDateTime::currentDateTime();
    const QString name = QStringLiteral("job-%1-%2-%3")
                             .arg(now.toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")))
                             .arg(::getpid())
                             .arg(m_jobCount);
    QDir queueDir(toQ(queueFolder));
    const QString partial = queueDir.filePath(kPartialPrefix + name);
    const QString final = queueDir.filePath(name);
    auto fail = [&](const char* what) {
        QDir(partial).removeRecursively();
        oxLog::error("Can't create a cluster job in '%s': %s.", queueFolder.c_str(), what);
        return false;
    };
    if (!queueDir.mkpath(partial))
        return fail("the job folder can't be created (check the folder's permissions)");

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
        return fail("the scene state can't be written");

    oxMessage job;
    job.addAttribute("version", "1");
    job.set("queue", queueName.toStdString());
    job.set("scene", std::string(kJobSceneFile));
    job.set("source", sourceFile);
    job.set("created", now.toString(Qt::ISODateWithMs).toStdString());
    job.set("host", oxPlatform::getAppVersionName().toStdString());
    std::string text;
    std::string error;
    if (!oxMessageRW::write(job, text) ||
        !oxFile::writeAtomically(QDir(partial).filePath(kJobRecordFile).toStdString(), text,
                                 &error))
        return fail("the job record can't be written");
    if (!QDir().rename(partial, final))
        return fail("the finished job folder can't be renamed");
    m_lastJob = final.toStdString();
    oxLog::info("Created cluster job '%s'.", m_lastJob.c_str());
    return true;
}
