#include "oxTestSupport.h"

#include "oxCallTrace.h"

#include <QProcess>
#include <QStringList>

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <ftw.h>
#include <unistd.h>

oxLogCapture::oxLogCapture()
{
    m_handle = oxLog::addSink([this](oxLog::Level level, const std::string& text) {
        m_entries.push_back({level, text});
    });
}

oxLogCapture::~oxLogCapture() { oxLog::removeSink(m_handle); }

std::vector<std::string> oxLogCapture::messages(oxLog::Level level) const
{
    std::vector<std::string> result;
    for (const Entry& entry : m_entries)
        if (entry.level == level)
            result.push_back(entry.text);
    return result;
}

bool oxLogCapture::contains(oxLog::Level level, const std::string& text) const
{
    for (const Entry& entry : m_entries)
        if (entry.level == level && entry.text == text)
            return true;
    return false;
}

void oxTest::expectLog(oxLog::Level level, const std::string& text)
{
    m_expected.push_back({level, text});
}

bool oxTest::allowed(const std::string& text) const
{
    for (const std::string& prefix : m_allowedPrefixes)
        if (text.rfind(prefix, 0) == 0)
            return true;
    return false;
}

std::vector<std::string> oxTest::ownMessages(oxLog::Level level) const
{
    std::vector<std::string> result;
    for (const std::string& text : m_capture.messages(level))
        if (!allowed(text))
            result.push_back(text);
    return result;
}

void oxTest::TearDown()
{
    for (const oxLogCapture::Entry& expected : m_expected)
        EXPECT_TRUE(m_capture.contains(expected.level, expected.text))
            << "expected " << oxLog::levelName(expected.level) << " not logged: " << expected.text;
    for (const oxLogCapture::Entry& entry : m_capture.entries()) {
        if (entry.level > oxLog::Warning || allowed(entry.text))
            continue;
        bool announced = false;
        for (const oxLogCapture::Entry& expected : m_expected)
            announced = announced || (expected.level == entry.level && expected.text == entry.text);
        EXPECT_TRUE(announced) << "unexpected " << oxLog::levelName(entry.level) << ": "
                               << entry.text;
    }
}

oxTempDir::oxTempDir()
{
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/oxlin-test-XXXXXX";
    if (::mkdtemp(pattern.data()))
        m_path = pattern;
}

oxTempDir::~oxTempDir()
{
    if (m_path.empty())
        return;
    // Restore write permission on the way down so that read-only test folders go too.
    ::nftw(
        m_path.c_str(),
        [](const char* path, const struct stat*, int type, struct FTW*) {
            if (type == FTW_D || type == FTW_DP)
                ::chmod(path, 0755);
            return 0;
        },
        16, FTW_PHYS);
    ::nftw(
        m_path.c_str(),
        [](const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }, 16,
        FTW_DEPTH | FTW_PHYS);
}

std::string oxReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream data;
    data << in.rdbuf();
    return data.str();
}

std::vector<std::string> oxTraced(const std::string& name)
{
    std::vector<std::string> arguments;
    for (const oxCallTrace::Call& call : oxCallTrace::calls())
        if (call.name == name)
            arguments.push_back(call.arguments);
    return arguments;
}

bool oxIgnoresFilePermissions() { return ::geteuid() == 0; }

oxProcessResult oxRunProcess(const std::string& program, const std::vector<std::string>& arguments,
                             int timeoutMs)
{
    QStringList args;
    for (const std::string& argument : arguments)
        args << QString::fromStdString(argument);
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(QString::fromStdString(program), args);
    oxProcessResult result;
    if (!process.waitForStarted(timeoutMs)) {
        result.err = "could not start " + program;
        return result;
    }
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        result.err = "timed out: " + program;
    } else if (process.exitStatus() == QProcess::NormalExit) {
        result.exitCode = process.exitCode();
    }
    result.out = process.readAllStandardOutput().toStdString();
    result.err += process.readAllStandardError().toStdString();
    return result;
}
