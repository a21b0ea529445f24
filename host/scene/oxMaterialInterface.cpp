#include "oxMaterialInterface.h"

#include "oxCallTrace.h"
#include "oxSceneGraph.h"

#include <string>

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

void oxMaterialInterface::convertBrdfMaterial(osg::Material* material)
{
    auto* brdf = dynamic_cast<osg::UBRDFMaterialBase*>(material);
    oxCallTrace::record("oxMaterialInterface::convertBrdfMaterial", brdf ? brdf->name : "");
    if (!brdf || !m_photometric)
        return;
    osg::Vec4f glow = brdf->getIncandescenceColor();
    const float luminance =
        m_weights[0] * glow[0] + m_weights[1] * glow[1] + m_weights[2] * glow[2];
    if (luminance <= 0.0f)
        return;
    for (int c = 0; c < 3; ++c)
        glow[c] /= luminance;
    glow[3] *= luminance;
    brdf->setIncandescenceColor(glow);
    osg::commitChanges(brdf, osg::UBRDFMaterialBase::IncandescenceColorFieldMask);
}

void oxMaterialInterface::adjustAuxiliaryMaterial(osg::Material* material)
{
    auto* brdf = dynamic_cast<osg::UBRDFMaterialBase*>(material);
    oxCallTrace::record("oxMaterialInterface::adjustAuxiliaryMaterial", brdf ? brdf->name : "");
    if (!brdf)
        return;
    osg::Vec4f glow = brdf->getIncandescenceColor();
    glow[3] = m_photometric ? m_scale : 1.0f;
    brdf->setIncandescenceColor(glow);
    osg::commitChanges(brdf, osg::UBRDFMaterialBase::IncandescenceColorFieldMask);
}

void oxMaterialInterface::setLuminanceWeights(float red, float green, float blue)
{
    oxCallTrace::record("oxMaterialInterface::setLuminanceWeights");
    m_weights = {red, green, blue};
}

void oxMaterialInterface::setPhotometricScale(float scale)
{
    oxCallTrace::record("oxMaterialInterface::setPhotometricScale", std::to_string(scale));
    m_scale = scale;
}

oxMaterialInterface* oxInterfaceFactory::getMaterialInterface()
{
    return gMaterials ? gMaterials : &hostMaterials();
}

void oxInterfaceFactory::setMaterialInterface(oxMaterialInterface* materials)
{
    gMaterials = materials;
}
