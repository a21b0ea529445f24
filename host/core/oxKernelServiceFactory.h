#pragma once

#include <cstddef>
#include <cstdio>
#include <typeinfo>
#include <unordered_map>

/// Base of every host service that modules look up by type.
class oxBaseService {
public:
    virtual ~oxBaseService() = default;
};

/// The host's registry of services: a hash from a class's type to its service object.
class oxKernelServiceFactory {
public:
    static oxKernelServiceFactory* the();

    /// Registers service under the type T (replacing an earlier one). The registry doesn't
    /// own it; unregister it before it is destroyed.
    template <typename T>
    void registerService(T* service)
    {
        registerEntry(typeid(T).hash_code(), service);
    }
    /// Registers service under a type hash (typeid(T).hash_code()).
    void registerEntry(size_t typeHash, oxBaseService* service) { m_services[typeHash] = service; }
    template <typename T>
    void unregisterService()
    {
        m_services.erase(typeid(T).hash_code());
    }

    /// Entry of a type hash: found tells whether there is one (its value may still be null).
    oxBaseService* find(size_t typeHash, bool& found) const;

    /// The service of type T, or null with a line on standard error when there is no entry
    /// or the entry is null. Null as well when the entry is not a T.
    template <typename T>
    static T* getService()
    {
        bool found = false;
        oxBaseService* service = the()->find(typeid(T).hash_code(), found);
        if (!found) {
            std::fprintf(stderr, "oxKernelServiceFactory: couldn't find class '%s'!\n",
                         typeid(T).name());
            return nullptr;
        }
        if (!service) {
            std::fprintf(stderr, "oxKernelServiceFactory: service '%s' is NULL!\n",
                         typeid(T).name());
            return nullptr;
        }
        return dynamic_cast<T*>(service);
    }

private:
    std::unordered_map<size_t, oxBaseService*> m_services;
};
