#pragma once

/// Registers the host's Boost.Python converters for the types script modules pass:
/// std::vector<std::string> (to a list of str; from any sequence of str), osg::Vec3f (to a
/// tuple of three floats; from any sequence of three numbers) and std::vector<char> (bytes, to
/// and from bytes or bytearray). oxScript::start calls it; a second call does nothing.
void oxRegisterPythonConverters();
