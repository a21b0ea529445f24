#include "oxMessage.h"

#include <cxxabi.h>
#include <execinfo.h>

#include <cstdlib>
#include <memory>

oxMessage::oxMessage(uint64_t id) : m_id(id) {}

void oxMessage::set(const std::string& name, const boost::any& value, bool overwrite)
{
    if (!overwrite && has(name))
        return;
    m_attributes[name] = value;
}

const boost::any& oxMessage::get(const std::string& name) const
{
    static const boost::any empty;
    const auto it = m_attributes.find(name);
    return it == m_attributes.end() ? empty : it->second;
}

void oxMessage::clear()
{
    m_attributes.clear();
    m_recordAttributes.clear();
}

void oxMessage::addAttribute(const std::string& name, const std::string& value)
{
    m_recordAttributes[name] = value;
}

std::string oxMessage::getAttibute(const std::string& name) const
{
    const auto it = m_recordAttributes.find(name);
    return it == m_recordAttributes.end() ? std::string() : it->second;
}

namespace {

// Turns "lib.so(_ZN3foo3barEv+0x1a) [0x...]" into "lib.so(foo::bar()+0x1a) [0x...]".
std::string demangleFrame(const char* frame)
{
    std::string text(frame);
    const size_t open = text.find('(');
    const size_t plus = text.find('+', open);
    if (open == std::string::npos || plus == std::string::npos || plus == open + 1)
        return text;
    const std::string mangled = text.substr(open + 1, plus - open - 1);
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status), std::free);
    if (status != 0 || !name)
        return text;
    return text.substr(0, open + 1) + name.get() + text.substr(plus);
}

} // namespace

void oxMessage::printBT()
{
    void* frames[64];
    const int count = backtrace(frames, 64);
    char** symbols = backtrace_symbols(frames, count);
    std::fprintf(stderr, "Stack trace:\n");
    // Frame 0 is printBT itself.
    for (int i = 1; i < count; ++i)
        std::fprintf(stderr, "  #%d %s\n", i - 1,
                     symbols ? demangleFrame(symbols[i]).c_str() : "?");
    std::free(symbols);
}
