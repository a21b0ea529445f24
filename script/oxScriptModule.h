#pragma once

#include "oxScriptBinding.h"

#include "oxPythonRegister.h"

// What every script module of the plug-in does the same way: its creation and its registration
// with the host's interpreter.

namespace oxScriptModule {

// Registers the commands with hand-written docstrings only: script editors show those, and
// generated signatures would only repeat the C++ types.
template <void (*bindCommands)()>
void bindWithDocstrings()
{
    const boost::python::docstring_options docstrings(true, false, false);
    bindCommands();
}

/// The body of a module's PyInit function: creates the module name with the commands that
/// bindCommands registers. Each bindCommands has a module definition of its own.
template <void (*bindCommands)()>
PyObject* create(const char* name)
{
    static PyModuleDef_Base base = PyModuleDef_HEAD_INIT;
    static PyMethodDef noMethods[] = {{nullptr, nullptr, 0, nullptr}};
    static PyModuleDef definition = {base,    name,    nullptr, -1,     noMethods,
                                     nullptr, nullptr, nullptr, nullptr};
    return boost::python::detail::init_module(definition, &bindWithDocstrings<bindCommands>);
}

} // namespace oxScriptModule

/// A module's registrar, a static of the plug-in: the module is built into the interpreter
/// before it starts, then imported and star-imported so that scripts call its commands without
/// a prefix.
class oxScriptModuleRegistrar {
public:
    oxScriptModuleRegistrar(const char* name, PyObject* (*initFunction)());

private:
    oxPythonRegister m_register;
};
