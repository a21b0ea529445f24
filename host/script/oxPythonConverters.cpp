#include <boost/python.hpp>

#include "oxPythonConverters.h"

#include "oxSceneGraph.h"

#include <string>
#include <vector>

namespace bp = boost::python;

namespace {

// True when T already has a to-Python converter (a plug-in or an earlier call made one).
template <typename T>
bool hasToPython()
{
    const bp::converter::registration* entry = bp::converter::registry::query(bp::type_id<T>());
    return entry && entry->m_to_python;
}

template <typename T>
void* storageFor(bp::converter::rvalue_from_python_stage1_data* data)
{
    return reinterpret_cast<bp::converter::rvalue_from_python_storage<T>*>(data)->storage.bytes;
}

// A list or a tuple (not a str or bytes, which are sequences too) whose items all pass check.
bool isSequenceOf(PyObject* object, int (*check)(PyObject*), Py_ssize_t wantedSize = -1)
{
    if (!PyList_Check(object) && !PyTuple_Check(object))
        return false;
    const Py_ssize_t size = PySequence_Fast_GET_SIZE(object);
    if (wantedSize >= 0 && size != wantedSize)
        return false;
    PyObject** items = PySequence_Fast_ITEMS(object);
    for (Py_ssize_t i = 0; i < size; ++i)
        if (!check(items[i]))
            return false;
    return true;
}

int isText(PyObject* object) { return PyUnicode_Check(object); }
// bool is a number too, as in Python's own arithmetic.
int isNumber(PyObject* object) { return PyFloat_Check(object) || PyLong_Check(object); }

// ---- std::vector<std::string>: list of str --------------------------------------------------

struct StringListToPython {
    static PyObject* convert(const std::vector<std::string>& strings)
    {
        bp::list list;
        for (const std::string& text : strings)
            list.append(bp::str(text.data(), text.size()));
        return bp::incref(list.ptr());
    }
};

struct StringListFromPython {
    static void* convertible(PyObject* object)
    {
        return isSequenceOf(object, &isText) ? object : nullptr;
    }
    static void construct(PyObject* object, bp::converter::rvalue_from_python_stage1_data* data)
    {
        auto* strings = new (storageFor<std::vector<std::string>>(data)) std::vector<std::string>;
        const Py_ssize_t size = PySequence_Fast_GET_SIZE(object);
        PyObject** items = PySequence_Fast_ITEMS(object);
        strings->reserve(size_t(size));
        for (Py_ssize_t i = 0; i < size; ++i) {
            Py_ssize_t length = 0;
            const char* text = PyUnicode_AsUTF8AndSize(items[i], &length);
            if (!text)
                bp::throw_error_already_set();
            strings->emplace_back(text, size_t(length));
        }
        data->convertible = strings;
    }
};

// ---- osg::Vec3f: tuple of three floats ------------------------------------------------------

struct Vec3fToPython {
    static PyObject* convert(const osg::Vec3f& vector)
    {
        return bp::incref(bp::make_tuple(vector[0], vector[1], vector[2]).ptr());
    }
};

struct Vec3fFromPython {
    static void* convertible(PyObject* object)
    {
        return isSequenceOf(object, &isNumber, 3) ? object : nullptr;
    }
    static void construct(PyObject* object, bp::converter::rvalue_from_python_stage1_data* data)
    {
        auto* vector = new (storageFor<osg::Vec3f>(data)) osg::Vec3f{0.0f, 0.0f, 0.0f};
        PyObject** items = PySequence_Fast_ITEMS(object);
        for (int i = 0; i < 3; ++i)
            (*vector)[size_t(i)] = float(PyFloat_AsDouble(items[i]));
        data->convertible = vector;
    }
};

// ---- std::vector<char>: bytes ---------------------------------------------------------------

struct BytesToPython {
    static PyObject* convert(const std::vector<char>& bytes)
    {
        return PyBytes_FromStringAndSize(bytes.data(), Py_ssize_t(bytes.size()));
    }
};

struct BytesFromPython {
    static void* convertible(PyObject* object)
    {
        return PyBytes_Check(object) || PyByteArray_Check(object) ? object : nullptr;
    }
    static void construct(PyObject* object, bp::converter::rvalue_from_python_stage1_data* data)
    {
        const char* begin =
            PyBytes_Check(object) ? PyBytes_AS_STRING(object) : PyByteArray_AS_STRING(object);
        const Py_ssize_t size =
            PyBytes_Check(object) ? PyBytes_GET_SIZE(object) : PyByteArray_GET_SIZE(object);
        data->convertible =
            new (storageFor<std::vector<char>>(data)) std::vector<char>(begin, begin + size);
    }
};

template <typename T, typename To, typename From>
void registerConverters()
{
    if (hasToPython<T>())
        return;
    bp::to_python_converter<T, To>();
    bp::converter::registry::push_back(&From::convertible, &From::construct, bp::type_id<T>());
}

} // namespace

void oxRegisterPythonConverters()
{
    registerConverters<std::vector<std::string>, StringListToPython, StringListFromPython>();
    registerConverters<osg::Vec3f, Vec3fToPython, Vec3fFromPython>();
    registerConverters<std::vector<char>, BytesToPython, BytesFromPython>();
}
