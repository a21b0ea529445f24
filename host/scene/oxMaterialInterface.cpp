#include "oxMaterialInterface.h"

#include "oxCallTrace.h"

namespace {

oxMaterialInterface& hostMaterials()
{
    static oxMaterialInterface materials;
    return materials;
}

oxMaterialInterface* gMaterials = nullptr;

} // namespace

void oxMaterialInterface::setPhotometricMode(bool photometric)
{
    oxCallTrace::record("oxMaterialInterface::setPhotometricMode", photometric ? "true" : "false");
    m_photometric = photometric;
}

void oxMaterialInterface::materialsChanged()
{
    oxCallTrace::record("oxMaterialInterface::materialsChanged");
}

oxMaterialInterface* oxInterfaceFactory::getMaterialInterface()
{
    return gMaterials ? gMaterials : &hostMaterials();
}

void oxInterfaceFactory::setMaterialInterface(oxMaterialInterface* materials)
{
    gMaterials = materials;
}
