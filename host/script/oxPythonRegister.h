#pragma once

#include <functional>
#include <vector>

class oxPythonRegister;

/// The host's registry of script modules. Plug-ins register through a static
/// oxPythonRegister; oxScript::start calls each registrar once per level, in the order the
/// registrars were made.
class oxPythonRegisterFactory {
public:
    // With a fixed underlying type, so that a level a registrar doesn't know is still a value.
    enum Level : int {
        /// Before the interpreter starts: the time to add built-in modules
        /// (PyImport_AppendInittab).
        BeforeInitialize = 0,
        /// After it started, with the host's converters in place: the time to import.
        AfterInitialize = 1,
    };

    static oxPythonRegisterFactory& the();

    /// Calls every registrar with level.
    void callLevel(Level level);
    /// The number of registrars now known.
    size_t count() const { return m_registers.size(); }

private:
    friend class oxPythonRegister;
    void add(oxPythonRegister* registrar);
    void remove(oxPythonRegister* registrar);

    std::vector<oxPythonRegister*> m_registers;
};

/// One script module's registrar: constructed (usually as a static of a plug-in) with the
/// function the host calls per level, and unregistered when destroyed.
class oxPythonRegister {
public:
    using Function = std::function<void(oxPythonRegisterFactory::Level)>;

    explicit oxPythonRegister(Function function);
    ~oxPythonRegister();
    oxPythonRegister(const oxPythonRegister&) = delete;
    oxPythonRegister& operator=(const oxPythonRegister&) = delete;

    void call(oxPythonRegisterFactory::Level level) const;

private:
    Function m_function;
};
