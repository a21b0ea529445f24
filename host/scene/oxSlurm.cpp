#include "oxSlurm.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

namespace {

std::string gConfigFile;

} // namespace

namespace oxSlurm {

std::string Result::problem() const
{
    if (ok)
        return std::string();
    const std::string text = err.empty() ? out : err;
    const std::string line = text.substr(0, text.find('\n'));
    return line.empty() ? std::string("no answer") : line;
}

void setConfigFile(const std::string& file) { gConfigFile = file; }

const std::string& configFile() { return gConfigFile; }

Result run(const QString& program, const QStringList& arguments, int timeoutMs)
{
    Result result;
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    if (!gConfigFile.empty()) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("SLURM_CONF"), QString::fromStdString(gConfigFile));
        process.setProcessEnvironment(environment);
    }
    process.start(program, arguments);
    if (!process.waitForStarted(timeoutMs)) {
        result.err = program.toStdString() + " can't be run (is Slurm's client installed?)";
        return result;
    }
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished(1000);
        result.timedOut = true;
        result.err = program.toStdString() + " gave no answer within " +
                     std::to_string(timeoutMs / 1000) + " s";
        return result;
    }
    result.out = process.readAllStandardOutput().toStdString();
    result.err = process.readAllStandardError().toStdString();
    result.ok = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    if (!result.ok && result.err.empty() && result.out.empty())
        result.err =
            program.toStdString() + " failed with status " + std::to_string(process.exitCode());
    return result;
}

bool ping(std::string& problem)
{
    // scontrol ping names each controller "UP" or "DOWN"; one that is up is enough.
    const Result result = run(QStringLiteral("scontrol"), {QStringLiteral("ping")}, 5000);
    if (result.ok && result.out.find("is UP") != std::string::npos) {
        problem.clear();
        return true;
    }
    problem = result.ok ? result.out.substr(0, result.out.find('\n')) : result.problem();
    if (problem.empty())
        problem = "the Slurm controller doesn't answer";
    return false;
}

QStringList partitions()
{
    const Result result = run(QStringLiteral("sinfo"),
                              {QStringLiteral("-h"), QStringLiteral("-o"), QStringLiteral("%R")});
    QStringList names;
    if (!result.ok)
        return names;
    for (const QString& line : QString::fromStdString(result.out).split('\n')) {
        const QString name = line.trimmed();
        if (!name.isEmpty() && !names.contains(name))
            names << name;
    }
    return names;
}

ArrayState arrayState(const std::string& id)
{
    ArrayState state;
    const Result result =
        run(QStringLiteral("squeue"),
            {QStringLiteral("-h"), QStringLiteral("-r"), QStringLiteral("-j"),
             QString::fromStdString(id), QStringLiteral("-o"), QStringLiteral("%T")});
    if (!result.ok)
        return state;
    for (const QString& line : QString::fromStdString(result.out).split('\n')) {
        const QString task = line.trimmed();
        if (task.isEmpty())
            continue;
        state.known = true;
        if (task == QLatin1String("PENDING") || task == QLatin1String("CONFIGURING"))
            ++state.pending;
        else if (task == QLatin1String("RUNNING") || task == QLatin1String("COMPLETING"))
            ++state.running;
    }
    return state;
}

bool addHostLimit(const std::string& hosts, QStringList& arguments, std::string& problem)
{
    const QStringList wanted = QString::fromStdString(hosts).split(
        QRegularExpression(QStringLiteral("[,;\\s]+")), Qt::SkipEmptyParts);
    if (wanted.isEmpty())
        return true;
    const Result listed =
        run(QStringLiteral("sinfo"), {QStringLiteral("-h"), QStringLiteral("-N"),
                                      QStringLiteral("-o"), QStringLiteral("%N")});
    QStringList nodes;
    for (const QString& line : QString::fromStdString(listed.out).split('\n')) {
        if (!line.trimmed().isEmpty() && !nodes.contains(line.trimmed()))
            nodes << line.trimmed();
    }
    for (const QString& host : wanted) {
        if (!nodes.contains(host)) {
            problem = "the cluster has no node '" + host.toStdString() + "'";
            return false;
        }
    }
    if (wanted.size() == 1) {
        arguments << QStringLiteral("--nodelist=") + wanted.first();
        return true;
    }
    QStringList others;
    for (const QString& node : nodes) {
        if (!wanted.contains(node))
            others << node;
    }
    if (!others.isEmpty())
        arguments << QStringLiteral("--exclude=") + others.join(QLatin1Char(','));
    return true;
}

std::string shellQuoted(const std::string& text)
{
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

} // namespace oxSlurm
