// Python headers first: they set feature macros that the C library headers must see. Sizes of
// "s#" arguments are Py_ssize_t.
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include "oxScript.h"

#include "oxLog.h"
#include "oxPythonConverters.h"
#include "oxPythonRegister.h"

#include <QCoreApplication>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace {

// Scripts run on the GUI thread only, so plain counters suffice.
int gRunning = 0;
bool gStarted = false;
bool gKeepResponsive = false;

// Python threads a script starts print from outside the GUI thread.
std::mutex gListenerMutex;
std::map<int, oxScript::OutputListener>& listeners()
{
    static std::map<int, oxScript::OutputListener> map;
    return map;
}
int gNextListener = 1;

// An owned reference, released on every way out of a scope.
class PyRef {
public:
    explicit PyRef(PyObject* object = nullptr) : m_object(object) {}
    ~PyRef() { Py_XDECREF(m_object); }
    PyRef(const PyRef&) = delete;
    PyRef& operator=(const PyRef&) = delete;
    PyObject* get() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    PyObject* m_object;
};

// The text of a Python object (str() of it); empty when even that fails.
std::string textOf(PyObject* object)
{
    PyRef text(object ? PyObject_Str(object) : nullptr);
    const char* utf8 = text ? PyUnicode_AsUTF8(text.get()) : nullptr;
    if (!utf8) {
        PyErr_Clear();
        return std::string();
    }
    return utf8;
}

// ---- Output: sys.stdout and sys.stderr of every script ------------------------------------

void deliver(oxScript::Stream stream, const char* text, size_t length)
{
    std::FILE* file = stream == oxScript::Output ? stdout : stderr;
    std::fwrite(text, 1, length, file);
    // Lines reach a pipe in the order they were written, interleaved with the host's own.
    if (std::memchr(text, '\n', length))
        std::fflush(file);
    std::map<int, oxScript::OutputListener> current;
    {
        // A listener may remove itself; call a copy of the table.
        std::lock_guard<std::mutex> lock(gListenerMutex);
        if (listeners().empty())
            return;
        current = listeners();
    }
    const std::string copy(text, length);
    for (const auto& entry : current)
        entry.second(stream, copy);
}

PyObject* hostWrite(PyObject*, PyObject* args)
{
    int stream = 0;
    const char* text = nullptr;
    Py_ssize_t length = 0;
    if (!PyArg_ParseTuple(args, "is#", &stream, &text, &length))
        return nullptr;
    deliver(stream == 1 ? oxScript::Error : oxScript::Output, text, size_t(length));
    return PyLong_FromSsize_t(length);
}

PyMethodDef gHostMethods[] = {
    {"write", hostWrite, METH_VARARGS, "Writes text to the host's output (0) or error (1) stream."},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef gHostModule = {
    PyModuleDef_HEAD_INIT,
    "_oxhost",
    "The host's own hooks for its scripts.",
    -1,
    gHostMethods,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

PyObject* initHostModule() { return PyModule_Create(&gHostModule); }

// Replaces sys.stdout and sys.stderr by writers into the host, which passes the text on to the
// process's streams and to the listeners (the Script Editor's output pane).
const char kInstallStreams[] = R"(
import sys as _sys
import _oxhost

class _oxHostStream:
    encoding = 'utf-8'
    errors = 'strict'

    def __init__(self, stream, fd):
        self._stream = stream
        self._fd = fd

    def write(self, text):
        if not isinstance(text, str):
            raise TypeError('write() argument must be str, not ' + type(text).__name__)
        return _oxhost.write(self._stream, text)

    def writelines(self, lines):
        for line in lines:
            self.write(line)

    def flush(self):
        pass

    def fileno(self):
        return self._fd

    def isatty(self):
        return False

    def readable(self):
        return False

    def writable(self):
        return True

_sys.stdout = _oxHostStream(0, 1)
_sys.stderr = _oxHostStream(1, 2)
_sys.argv = ['']
)";

// Runs the stream set-up in a namespace of its own, which its writers keep alive, so that the
// scripts' namespace stays clean.
bool installStreams()
{
    PyRef globals(PyDict_New());
    if (!globals || PyDict_SetItemString(globals.get(), "__builtins__", PyEval_GetBuiltins()) != 0)
        return false;
    PyRef result(PyRun_String(kInstallStreams, Py_file_input, globals.get(), globals.get()));
    return bool(result);
}

// ---- Keeping the GUI painting while a script runs ------------------------------------------

// A ticker thread asks the interpreter, through a pending call, to let Qt process its queued
// events (paint, timers) between two bytecodes. User input waits until the script ends.
class ResponsiveTicker {
public:
    ResponsiveTicker() : m_thread([this] { tick(); }) {}
    ~ResponsiveTicker()
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_stop = true;
        }
        m_wake.notify_all();
        m_thread.join();
    }

private:
    static int pump(void*)
    {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        return 0;
    }

    void tick()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_wake.wait_for(lock, std::chrono::milliseconds(50), [this] { return m_stop; }))
            Py_AddPendingCall(&ResponsiveTicker::pump, nullptr);
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stop = false;
    std::thread m_thread;
};

// ---- Errors --------------------------------------------------------------------------------

// The exit status of a SystemExit being raised: its code as Python's own interpreter reads it.
int exitStatus(PyObject* value)
{
    PyRef code(value ? PyObject_GetAttrString(value, "code") : nullptr);
    if (!code) {
        PyErr_Clear();
        return 0;
    }
    if (code.get() == Py_None)
        return 0;
    if (PyLong_Check(code.get())) {
        const long status = PyLong_AsLong(code.get());
        if (PyErr_Occurred()) {
            PyErr_Clear();
            return 1;
        }
        return int(status);
    }
    // sys.exit("message"): the message goes to standard error, the status is 1.
    const std::string message = textOf(code.get()) + "\n";
    deliver(oxScript::Error, message.data(), message.size());
    return 1;
}

// The pending exception as an outcome: sys.exit becomes an exit, anything else is logged with
// its traceback.
oxScript::Outcome takeError()
{
    PyObject* type = nullptr;
    PyObject* value = nullptr;
    PyObject* traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    PyErr_NormalizeException(&type, &value, &traceback);
    if (traceback && value)
        PyException_SetTraceback(value, traceback);
    PyRef typeRef(type), valueRef(value), tracebackRef(traceback);

    oxScript::Outcome outcome;
    if (type && PyErr_GivenExceptionMatches(type, PyExc_SystemExit)) {
        outcome.kind = oxScript::Outcome::Exit;
        outcome.exitCode = exitStatus(value);
        return outcome;
    }
    outcome.kind = oxScript::Outcome::Exception;
    outcome.exitCode = 1;

    std::string text;
    PyRef module(PyImport_ImportModule("traceback"));
    PyRef lines(module ? PyObject_CallMethod(module.get(), "format_exception", "OOO",
                                             type ? type : Py_None, value ? value : Py_None,
                                             traceback ? traceback : Py_None)
                       : nullptr);
    PyRef joined(lines ? PyUnicode_Join(PyRef(PyUnicode_FromString("")).get(), lines.get())
                       : nullptr);
    if (joined && PyUnicode_AsUTF8(joined.get()))
        text = PyUnicode_AsUTF8(joined.get());
    else
        text = textOf(type) + ": " + textOf(value);
    PyErr_Clear();
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    oxLog::error("%s", text.c_str());
    return outcome;
}

} // namespace

bool oxScript::isRunning() { return gRunning > 0; }

oxScript::oxScriptRun::oxScriptRun() { ++gRunning; }

oxScript::oxScriptRun::~oxScriptRun() { --gRunning; }

bool oxScript::start()
{
    if (gStarted)
        return true;
    if (PyImport_AppendInittab("_oxhost", &initHostModule) != 0) {
        oxLog::error("Python: can't register the host's module");
        return false;
    }
    oxPythonRegisterFactory::the().callLevel(oxPythonRegisterFactory::BeforeInitialize);

    PyConfig config;
    PyConfig_InitPythonConfig(&config);
    // The host keeps its own signal handlers (Ctrl-C cancels a render), and command lines are
    // the host's, not Python's.
    config.install_signal_handlers = 0;
    config.parse_argv = 0;
    const PyStatus status = Py_InitializeFromConfig(&config);
    PyConfig_Clear(&config);
    if (PyStatus_Exception(status)) {
        oxLog::error("Python: the interpreter can't start: %s",
                     status.err_msg ? status.err_msg : "unknown reason");
        return false;
    }
    gStarted = true;
    oxRegisterPythonConverters();
    if (!installStreams()) {
        PyErr_Print();
        oxLog::error("Python: can't redirect the script output streams");
    }
    oxPythonRegisterFactory::the().callLevel(oxPythonRegisterFactory::AfterInitialize);
    return true;
}

void oxScript::stop()
{
    if (!gStarted)
        return;
    if (Py_FinalizeEx() != 0)
        std::fflush(stdout); // output that couldn't be flushed is gone; nothing else to do
    gStarted = false;
}

bool oxScript::isStarted() { return gStarted; }

oxScript::Outcome oxScript::execute(const std::string& code, const std::string& fileName)
{
    Outcome outcome;
    if (!gStarted) {
        oxLog::error("Python: can't run '%s': the interpreter isn't running", fileName.c_str());
        outcome.kind = Outcome::Exception;
        outcome.exitCode = 1;
        return outcome;
    }
    oxScriptRun running;
    std::unique_ptr<ResponsiveTicker> ticker;
    if (gKeepResponsive && gRunning == 1)
        ticker = std::make_unique<ResponsiveTicker>();

    PyObject* main = PyImport_AddModule("__main__"); // borrowed
    PyObject* globals = main ? PyModule_GetDict(main) : nullptr;
    if (!globals)
        return takeError();
    if (!fileName.empty() && fileName.front() != '<') {
        PyRef path(PyUnicode_DecodeFSDefault(fileName.c_str()));
        if (!path || PyDict_SetItemString(globals, "__file__", path.get()) != 0)
            return takeError();
    }
    PyRef compiled(Py_CompileString(code.c_str(), fileName.c_str(), Py_file_input));
    if (!compiled)
        return takeError();
    PyRef result(PyEval_EvalCode(compiled.get(), globals, globals));
    if (!result)
        return takeError();
    return outcome;
}

bool oxScript::run(const std::string& code)
{
    const Outcome outcome = execute(code);
    return outcome.kind == Outcome::Success;
}

void oxScript::setArguments(const std::vector<std::string>& arguments)
{
    if (!gStarted)
        return;
    PyRef list(PyList_New(0));
    for (const std::string& argument : arguments) {
        PyRef item(PyUnicode_DecodeFSDefault(argument.c_str()));
        if (!item || PyList_Append(list.get(), item.get()) != 0) {
            takeError();
            return;
        }
    }
    if (PySys_SetObject("argv", list.get()) != 0)
        takeError();
}

int oxScript::addOutputListener(OutputListener listener)
{
    std::lock_guard<std::mutex> lock(gListenerMutex);
    const int handle = gNextListener++;
    listeners()[handle] = std::move(listener);
    return handle;
}

void oxScript::removeOutputListener(int handle)
{
    std::lock_guard<std::mutex> lock(gListenerMutex);
    listeners().erase(handle);
}

void oxScript::setKeepResponsive(bool on) { gKeepResponsive = on; }

bool oxScript::isKeepResponsive() { return gKeepResponsive; }
