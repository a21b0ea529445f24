#include "oxKernelServiceFactory.h"

oxKernelServiceFactory* oxKernelServiceFactory::the()
{
    static oxKernelServiceFactory factory;
    return &factory;
}

oxBaseService* oxKernelServiceFactory::find(size_t typeHash, bool& found) const
{
    const auto it = m_services.find(typeHash);
    found = it != m_services.end();
    return found ? it->second : nullptr;
}
