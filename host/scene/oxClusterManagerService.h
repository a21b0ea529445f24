#pragma once

#include "oxKernelServiceFactory.h"

#include <QString>
#include <QStringList>

#include <string>

/// The host's cluster manager: hands render jobs of the current scene to cluster queues.
///
/// The cluster here is a spool folder that render nodes watch. Each subfolder of the spool
/// folder is a queue, named like the folder. A job is a folder of its own in its queue (or in
/// the spool folder itself when there is no queue): the scene state as a project
/// ("scene.oxp", with its model when the scene has no model file yet) and the job record
/// ("job.xml"). A job folder appears complete or not at all: it is written under a temporary
/// name and renamed when complete.
///
/// The user is logged in while a spool folder is set (the preference "Cluster Spool Folder",
/// or login()); logged out otherwise.
class oxClusterManagerService : public oxBaseService {
public:
    /// The preference key that names the spool folder at start.
    static constexpr const char* kSpoolPreference = "Cluster Spool Folder";
    /// The names inside a job folder.
    static constexpr const char* kJobSceneFile = "scene.oxp";
    static constexpr const char* kJobRecordFile = "job.xml";

    /// Logged in to the spool folder of the preferences, if one is set there.
    oxClusterManagerService();
    ~oxClusterManagerService() override = default;

    /// Creates a job of the current scene state in queue (the empty name: the only queue, or
    /// the spool folder itself when there are no queues). The first argument is reserved and
    /// null. False, with an error in the log, when logged out, the queue is unknown or the
    /// job can't be written; the scene is never changed.
    virtual bool createRenderJob(void* reserved, const QString& queueName);
    /// The queues of the spool folder, sorted by name; empty when logged out.
    virtual QStringList getQueueNames();
    /// True while a spool folder is set.
    virtual bool isLoggedIn();

    /// Logs in to folder (created when missing); false with an error when it can't be made.
    bool login(const std::string& folder);
    void logout();
    /// The spool folder, "" when logged out.
    const std::string& getSpoolFolder() const { return m_spool; }
    /// The folder of the job created last, "" before the first.
    const std::string& getLastJobFolder() const { return m_lastJob; }

private:
    bool writeJob(const std::string& queueFolder, const QString& queueName);

    std::string m_spool;
    std::string m_lastJob;
    int m_jobCount = 0;
};
