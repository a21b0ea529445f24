#include "oxScriptModule.h"

#include "oxScript.h"

#include <string>

oxScriptModuleRegistrar::oxScriptModuleRegistrar(const char* name, PyObject* (*initFunction)())
    : m_register([name, initFunction](oxPythonRegisterFactory::Level level) {
          switch (level) {
          case oxPythonRegisterFactory::BeforeInitialize:
              PyImport_AppendInittab(name, initFunction);
              break;
          case oxPythonRegisterFactory::AfterInitialize:
              oxScript::run("import " + std::string(name));
              oxScript::run("from " + std::string(name) + " import *");
              break;
          default:
              break;
          }
      })
{}
