#include "oxPythonRegister.h"

#include <algorithm>

oxPythonRegisterFactory& oxPythonRegisterFactory::the()
{
    static oxPythonRegisterFactory factory;
    return factory;
}

void oxPythonRegisterFactory::callLevel(Level level)
{
    // A registrar may run code that loads or unloads another; walk a copy.
    const std::vector<oxPythonRegister*> registers = m_registers;
    for (oxPythonRegister* registrar : registers)
        if (std::find(m_registers.begin(), m_registers.end(), registrar) != m_registers.end())
            registrar->call(level);
}

void oxPythonRegisterFactory::add(oxPythonRegister* registrar) { m_registers.push_back(registrar); }

void oxPythonRegisterFactory::remove(oxPythonRegister* registrar)
{
    m_registers.erase(std::remove(m_registers.begin(), m_registers.end(), registrar),
                      m_registers.end());
}

oxPythonRegister::oxPythonRegister(Function function) : m_function(std::move(function))
{
    oxPythonRegisterFactory::the().add(this);
}

oxPythonRegister::~oxPythonRegister() { oxPythonRegisterFactory::the().remove(this); }

void oxPythonRegister::call(oxPythonRegisterFactory::Level level) const
{
    if (m_function)
        m_function(level);
}
