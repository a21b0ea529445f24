#pragma once

#include "oxKernelServiceFactory.h"

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

/// The host's cluster manager: hands render jobs of the current scene to a Slurm cluster.
///
/// The user is logged in while a Slurm controller answers; the queues are the partitions the
/// user may submit to. A job is a folder in the shared job folder (preference "Cluster Job
/// Folder"): the scene state as a project ("scene.oxp", with its model when the scene has no
/// model file yet) and the job record ("job.xml"). The folder appears complete or not at all,
/// and one Slurm job array renders it: one task per render step and variant set tuple (and
/// per frame for image sequences), each running
///   oxlin --no-gui JOBFOLDER/scene.oxp --render-job JOBFOLDER/job.xml --task N
/// Each task leaves "tasks/N.done" or "tasks/N.failed" and its log "logs/task-N.log" there.
class oxClusterManagerService : public oxBaseService {
public:
    /// Preference keys: the shared job folder, a Slurm configuration file other than the
    /// environment's, and the oxlin program the nodes run.
    static constexpr const char* kJobFolderPreference = "Cluster Job Folder";
    static constexpr const char* kSlurmConfigPreference = "Cluster Slurm Configuration";
    static constexpr const char* kRenderProgramPreference = "Cluster Render Program";
    /// The names inside a job folder.
    static constexpr const char* kJobSceneFile = "scene.oxp";
    static constexpr const char* kJobRecordFile = "job.xml";
    static constexpr const char* kTaskFolder = "tasks";
    static constexpr const char* kLogFolder = "logs";
    static constexpr const char* kCancelledFile = "cancelled";
    /// Keys of the job record.
    static constexpr const char* kJobIdKey = "slurmJobId";
    static constexpr const char* kTaskCountKey = "taskCount";
    static constexpr const char* kFramesPerTaskKey = "framesPerTask";
    static constexpr const char* kFilesKey = "files";

    /// Where a cluster job stands.
    enum class JobState { Pending, Running, Completed, Failed, Cancelled, Unknown };
    struct JobStatus {
        std::string folder;
        std::string id;
        JobState state = JobState::Unknown;
        int tasksDone = 0;
        int tasksTotal = 0;
        /// The failed tasks, each with the end of its log.
        std::string failure;
    };

    /// Takes the job folder, Slurm configuration and program from the preferences.
    oxClusterManagerService();
    ~oxClusterManagerService() override = default;

    /// Creates a job of the current scene state in queue (the empty name: the default
    /// partition) and submits it. The first argument is reserved and null. False, with an
    /// error in the log, when logged out, the queue is unknown, the job can't be written or
    /// Slurm refuses it; nothing of the job is left then. The scene is never changed.
    virtual bool createRenderJob(void* reserved, const QString& queueName);
    /// The partitions the user may submit to; empty when logged out.
    virtual QStringList getQueueNames();
    /// True while a Slurm controller answers; else the reason is logged as a warning and
    /// kept (getLoginProblem).
    virtual bool isLoggedIn();

    /// Why the last isLoggedIn() was false ("" when it was true).
    const std::string& getLoginProblem() const { return m_loginProblem; }
    void setJobFolder(const std::string& folder);
    const std::string& getJobFolder() const { return m_jobFolder; }
    /// The oxlin program the tasks run; "" picks the one beside this program.
    void setRenderProgram(const std::string& program);
    std::string getRenderProgram() const;

    /// The folder of the job created last, "" before the first.
    const std::string& getLastJobFolder() const { return m_lastJob; }
    /// The jobs created since start, oldest first.
    const std::vector<std::string>& getJobFolders() const { return m_jobs; }
    /// What the job of folder is doing, from Slurm and the tasks' results.
    JobStatus getJobStatus(const std::string& folder) const;
    /// Cancels the job of folder; false with an error when Slurm refuses.
    bool cancelJob(const std::string& folder);

    /// Renders task of the job whose record is jobFile in the open scene (oxlin
    /// --render-job), leaving the task's result in the job folder; the exit status.
    static int runTask(const std::string& jobFile, int task);

private:
    bool writeAndSubmit(const QString& queueName);

    std::string m_jobFolder;
    std::string m_program;
    std::string m_loginProblem;
    std::string m_lastJob;
    std::vector<std::string> m_jobs;
    int m_jobCount = 0;
};
