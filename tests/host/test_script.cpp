// The embedded interpreter: the registry's levels, script outcomes, output and the host's
// converters, through a probe module registered the way plug-ins register theirs.

#include <boost/python.hpp>

#include "oxPythonRegister.h"
#include "oxSceneGraph.h"
#include "oxScript.h"
#include "oxTestSupport.h"

#include <string>
#include <vector>

namespace bp = boost::python;

namespace {

std::vector<std::string> gLevels;

std::vector<std::string> reversedStrings(const std::vector<std::string>& strings)
{
    return std::vector<std::string>(strings.rbegin(), strings.rend());
}
osg::Vec3f doubledVector(const osg::Vec3f& v) { return {2 * v[0], 2 * v[1], 2 * v[2]}; }
std::vector<char> bytesWithZero(const std::vector<char>& bytes)
{
    std::vector<char> result(bytes);
    result.push_back('\0');
    return result;
}

BOOST_PYTHON_MODULE(oxProbe)
{
    bp::def("reversedStrings", &reversedStrings);
    bp::def("doubledVector", &doubledVector);
    bp::def("bytesWithZero", &bytesWithZero);
}

// Registered at static initialisation, as a plug-in's registrar is at load time.
oxPythonRegister gProbeRegister([](oxPythonRegisterFactory::Level level) {
    if (level == oxPythonRegisterFactory::BeforeInitialize) {
        gLevels.push_back(Py_IsInitialized() ? "0 after start" : "0 before start");
        PyImport_AppendInittab("oxProbe", &PyInit_oxProbe);
    } else if (level == oxPythonRegisterFactory::AfterInitialize) {
        gLevels.push_back(Py_IsInitialized() ? "1 after start" : "1 before start");
        oxScript::run("from oxProbe import *");
    }
});

class ScriptTest : public oxTest {
protected:
    void SetUp() override { ASSERT_TRUE(oxScript::start()); }
};

TEST_F(ScriptTest, RegistrarsRunAroundTheStartAndImportIntoMain)
{
    EXPECT_EQ(gLevels, (std::vector<std::string>{"0 before start", "1 after start"}));
    EXPECT_TRUE(oxScript::run("assert reversedStrings(['a', 'b']) == ['b', 'a']"));
    // A registrar that is gone is not called any more.
    const size_t before = oxPythonRegisterFactory::the().count();
    {
        oxPythonRegister temporary([](oxPythonRegisterFactory::Level) { FAIL(); });
        EXPECT_EQ(oxPythonRegisterFactory::the().count(), before + 1);
    }
    oxPythonRegisterFactory::the().callLevel(oxPythonRegisterFactory::Level(2));
    EXPECT_EQ(oxPythonRegisterFactory::the().count(), before);
}

TEST_F(ScriptTest, ConvertersRoundTripAndRefuseWrongTypes)
{
    EXPECT_TRUE(oxScript::run(R"(
assert reversedStrings(('x', 'y', 'z')) == ['z', 'y', 'x']
assert reversedStrings([]) == []
assert reversedStrings(['\u00e9t\u00e9']) == ['\u00e9t\u00e9']
assert doubledVector((1, 2.5, -3)) == (2.0, 5.0, -6.0)
assert doubledVector([0.5, 0.5, 0.5]) == (1.0, 1.0, 1.0)
assert bytesWithZero(b'ab') == b'ab\x00'
assert bytesWithZero(bytearray(b'')) == b'\x00'
for call, argument in ((reversedStrings, 'ab'), (reversedStrings, [1, 2]),
                       (doubledVector, (1, 2)), (doubledVector, ('a', 2, 3)),
                       (bytesWithZero, 'text')):
    try:
        call(argument)
    except TypeError as error:
        assert 'did not match C++ signature' in str(error), error
    else:
        raise AssertionError('%r accepted %r' % (call, argument))
)"));
}

TEST_F(ScriptTest, OutcomesOfExceptionsAndExits)
{
    struct Case {
        const char* code;
        oxScript::Outcome::Kind kind;
        int exitCode;
    };
    const Case cases[] = {
        {"x = 1", oxScript::Outcome::Success, 0},
        {"import sys\nsys.exit(3)", oxScript::Outcome::Exit, 3},
        {"import sys\nsys.exit()", oxScript::Outcome::Exit, 0},
        {"raise SystemExit('bye')", oxScript::Outcome::Exit, 1},
        {"1 / 0", oxScript::Outcome::Exception, 1},
        {"def broken(:\n", oxScript::Outcome::Exception, 1},
    };
    for (const Case& c : cases) {
        const oxScript::Outcome outcome = oxScript::execute(c.code, "<case>");
        EXPECT_EQ(outcome.kind, c.kind) << c.code;
        EXPECT_EQ(outcome.exitCode, c.exitCode) << c.code;
    }
    const std::vector<std::string> errors = log().messages(oxLog::Error);
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_NE(errors[0].find("Traceback (most recent call last)"), std::string::npos);
    EXPECT_NE(errors[0].find("ZeroDivisionError: division by zero"), std::string::npos);
    EXPECT_NE(errors[1].find("SyntaxError"), std::string::npos);
    allowLogPrefix("Traceback");
    allowLogPrefix("  File");
    // The interpreter goes on after every one of them, with the same namespace.
    EXPECT_TRUE(oxScript::run("assert x == 1"));
    EXPECT_FALSE(oxScript::isRunning());
}

TEST_F(ScriptTest, PrintAndErrorsReachListenersAndArgvIsSet)
{
    std::string out, err;
    const int handle =
        oxScript::addOutputListener([&](oxScript::Stream stream, const std::string& text) {
            (stream == oxScript::Output ? out : err) += text;
        });
    oxScript::setArguments({"job.py", "--fast", "\u00e9"});
    EXPECT_TRUE(oxScript::run(R"(
import sys
print('args', sys.argv[1:])
print('warned', file=sys.stderr)
)"));
    oxScript::removeOutputListener(handle);
    EXPECT_EQ(out, "args ['--fast', '\u00e9']\n");
    EXPECT_EQ(err, "warned\n");
    EXPECT_TRUE(oxScript::run("print('after removal')"));
    EXPECT_EQ(out, "args ['--fast', '\u00e9']\n");
}

} // namespace
