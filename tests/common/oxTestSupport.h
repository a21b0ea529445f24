#pragma once

#include "oxLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Collects every oxLog message while alive.
class oxLogCapture {
public:
    struct Entry {
        oxLog::Level level;
        std::string text;
    };

    oxLogCapture();
    ~oxLogCapture();
    oxLogCapture(const oxLogCapture&) = delete;
    oxLogCapture& operator=(const oxLogCapture&) = delete;

    const std::vector<Entry>& entries() const { return m_entries; }
    /// Messages of exactly that level.
    std::vector<std::string> messages(oxLog::Level level) const;
    /// True when a message of that level has exactly this text.
    bool contains(oxLog::Level level, const std::string& text) const;
    void clear() { m_entries.clear(); }

private:
    int m_handle;
    std::vector<Entry> m_entries;
};

/// The one log-checking fixture of every suite: fails a test that logs an error or a warning it
/// didn't announce with expectLog (the expected message must then appear, with exactly that
/// text).
class oxTest : public ::testing::Test {
protected:
    void expectLog(oxLog::Level level, const std::string& text);
    /// Lets warnings and errors that start with prefix pass unannounced: a lower layer's report
    /// that the suite doesn't pin down.
    void allowLogPrefix(const std::string& prefix) { m_allowedPrefixes.push_back(prefix); }
    const oxLogCapture& log() const { return m_capture; }
    /// The messages of a level, less those that allowLogPrefix lets pass.
    std::vector<std::string> ownMessages(oxLog::Level level) const;
    void TearDown() override;

private:
    bool allowed(const std::string& text) const;

    oxLogCapture m_capture;
    std::vector<oxLogCapture::Entry> m_expected;
    std::vector<std::string> m_allowedPrefixes;
};

/// A fresh folder under the system's temporary folder, removed with everything in it.
class oxTempDir {
public:
    oxTempDir();
    ~oxTempDir();
    oxTempDir(const oxTempDir&) = delete;
    oxTempDir& operator=(const oxTempDir&) = delete;

    const std::string& path() const { return m_path; }
    /// path() + "/" + name.
    std::string file(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

/// The whole content of a file, byte for byte ("" when it can't be read).
std::string oxReadFile(const std::string& path);

/// The arguments of every traced host call of that name, in order.
std::vector<std::string> oxTraced(const std::string& name);

/// True when the process may write into folders without write permission (root).
bool oxIgnoresFilePermissions();

/// Result of running a program.
struct oxProcessResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

/// Runs program with arguments, no standard input, and waits at most timeoutMs.
oxProcessResult oxRunProcess(const std::string& program, const std::vector<std::string>& arguments,
                             int timeoutMs = 60000);
