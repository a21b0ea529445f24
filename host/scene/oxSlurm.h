#pragma once

#include <QStringList>

#include <string>
#include <vector>

/// The Slurm commands the cluster manager runs (scontrol, sinfo, sbatch, squeue, scancel),
/// each a short child process with a time limit, so that an unreachable controller never
/// hangs the host. Commands use the Slurm configuration of the environment (SLURM_CONF, or
/// Slurm's own default) unless a configuration file is set here.
namespace oxSlurm {

/// What a command gave: whether it ran and exited with 0, and its output.
struct Result {
    bool ok = false;
    bool timedOut = false;
    std::string out;
    std::string err;
    /// The first line that says why it failed ("" on success).
    std::string problem() const;
};

/// The configuration file handed to every command ("" for the environment's).
void setConfigFile(const std::string& file);
const std::string& configFile();

/// Runs program (a Slurm command found on PATH) with arguments, at most timeoutMs.
Result run(const QString& program, const QStringList& arguments, int timeoutMs = 10000);

/// True when the controller answers; problem says why not.
bool ping(std::string& problem);
/// The partitions the user may submit to, in Slurm's order, each once.
QStringList partitions();

/// What a job array is doing: its tasks that wait and run.
struct ArrayState {
    bool known = false; ///< the controller still lists the job
    int pending = 0;
    int running = 0;
};
/// The state of job array id.
ArrayState arrayState(const std::string& id);

/// Adds to arguments of sbatch what keeps a job array on the hosts of a text of host names
/// (separated by commas, semicolons or white space; none: nothing to add). Each task is one
/// node's work, so one host is the node list, and several exclude every other node of the
/// cluster (a node list would ask each task for all of them). False with problem when a host
/// isn't a node of the cluster.
bool addHostLimit(const std::string& hosts, QStringList& arguments, std::string& problem);

/// Quotes text for the shell that runs a batch script.
std::string shellQuoted(const std::string& text);

} // namespace oxSlurm
