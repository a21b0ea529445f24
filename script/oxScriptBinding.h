#pragma once

// Common ground of the plug-in's script bindings. Every binding unit includes this header
// instead of <boost/python.hpp>, so that all of them see the same Boost.Python arity.

// The longest commands take 16 arguments; Boost.Python's default limit is 15.
#ifndef BOOST_PYTHON_MAX_ARITY
#define BOOST_PYTHON_MAX_ARITY 16
#endif
#if BOOST_PYTHON_MAX_ARITY < 16
#error "Boost.Python was included before oxScriptBinding.h with too small an arity"
#endif

#include <boost/python.hpp>

#include <cstddef>
#include <string>

namespace oxScriptBinding {

/// Keywords for a command that takes count arguments, named by names[0] to names[count - 1].
template <std::size_t count>
boost::python::detail::keywords<count> keywordsFrom(const char* const* names)
{
    static_assert(count >= 1, "a keyword list names at least one argument");
    if constexpr (count == 1) {
        return boost::python::arg(names[0]);
    } else {
        boost::python::detail::keywords<count> keywords;
        for (std::size_t i = 0; i < count; ++i)
            keywords.elements[i].name = names[i];
        return keywords;
    }
}

/// Keywords for a command that takes count arguments, named by the first count names. Lets a
/// family of overloads share one list of argument names instead of repeating it per overload.
template <std::size_t count, std::size_t size>
boost::python::detail::keywords<count> keywordsOf(const char* const (&names)[size])
{
    static_assert(count <= size, "more keywords than names");
    return keywordsFrom<count>(names);
}

/// A script bytes object holding data (a str would decode it as text).
inline boost::python::object bytesObject(const std::string& data)
{
    return boost::python::object(
        boost::python::handle<>(PyBytes_FromStringAndSize(data.data(), Py_ssize_t(data.size()))));
}

/// trailingKeywords with the first count of names: for a form that shares a longer form's
/// list of names but names fewer of its arguments.
template <std::size_t arity, std::size_t count, std::size_t size>
boost::python::detail::keywords<arity> trailingKeywordsOf(const char* const (&names)[size])
{
    static_assert(count <= arity, "more keywords than arguments");
    static_assert(count <= size, "more keywords than names");
    const char* all[arity];
    for (std::size_t i = 0; i < arity; ++i)
        all[i] = i < arity - count ? "" : names[i - (arity - count)];
    return keywordsFrom<arity>(all);
}

/// Keywords for a command of arity arguments whose last arguments are named by names. The
/// arguments before them get empty names: left without any, Boost.Python would read a missing
/// name on a call with keywords and crash. No script can type an empty keyword, so they stay
/// positional and naming them is an ordinary TypeError.
template <std::size_t arity, std::size_t count>
boost::python::detail::keywords<arity> trailingKeywords(const char* const (&names)[count])
{
    return trailingKeywordsOf<arity, count>(names);
}

} // namespace oxScriptBinding
