#include "oxObjectService.h"

oxObjectService* oxObjectService::the()
{
    // Never destroyed: listeners may still disconnect during static destruction.
    static oxObjectService* service = new oxObjectService();
    return service;
}
