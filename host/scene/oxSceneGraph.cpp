#include "oxSceneGraph.h"

#include "oxCallTrace.h"
#include "oxController.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace osg {

namespace {

// Never destroyed: containers of the current scene unregister during static destruction.
std::unordered_map<UInt32, FieldContainer*>& registry()
{
    static auto* containers = new std::unordered_map<UInt32, FieldContainer*>();
    return *containers;
}

UInt32 nextId = 1;
int brdfMode = 2;
UInt32 renderingMode = UberMaterial::fresnel_respects_glossy_color | UberMaterial::use_ggx_brdf;

} // namespace

bool FieldContainerPtr::_ignore_change = false;

Matrix identityMatrix() { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}; }

Matrix multiply(const Matrix& a, const Matrix& b)
{
    Matrix r{};
    for (int c = 0; c < 4; ++c)
        for (int row = 0; row < 4; ++row) {
            float sum = 0;
            for (int k = 0; k < 4; ++k)
                sum += a[k * 4 + row] * b[c * 4 + k];
            r[c * 4 + row] = sum;
        }
    return r;
}

Matrix matrixFromTRS(const Vec3f& t, const Quaternion& q, const Vec3f& s)
{
    const float x = q[0], y = q[1], z = q[2], w = q[3];
    Matrix m{};
    m[0] = (1 - 2 * (y * y + z * z)) * s[0];
    m[1] = (2 * (x * y + z * w)) * s[0];
    m[2] = (2 * (x * z - y * w)) * s[0];
    m[4] = (2 * (x * y - z * w)) * s[1];
    m[5] = (1 - 2 * (x * x + z * z)) * s[1];
    m[6] = (2 * (y * z + x * w)) * s[1];
    m[8] = (2 * (x * z + y * w)) * s[2];
    m[9] = (2 * (y * z - x * w)) * s[2];
    m[10] = (1 - 2 * (x * x + y * y)) * s[2];
    m[12] = t[0];
    m[13] = t[1];
    m[14] = t[2];
    m[15] = 1;
    return m;
}

Vec3f transformPoint(const Matrix& m, const Vec3f& p)
{
    return {m[0] * p[0] + m[4] * p[1] + m[8] * p[2] + m[12],
            m[1] * p[0] + m[5] * p[1] + m[9] * p[2] + m[13],
            m[2] * p[0] + m[6] * p[1] + m[10] * p[2] + m[14]};
}

Vec3f transformVector(const Matrix& m, const Vec3f& v)
{
    return {m[0] * v[0] + m[4] * v[1] + m[8] * v[2], m[1] * v[0] + m[5] * v[1] + m[9] * v[2],
            m[2] * v[0] + m[6] * v[1] + m[10] * v[2]};
}

void decompose(const Matrix& m, Vec3f& t, Quaternion& q, Vec3f& s)
{
    t = {m[12], m[13], m[14]};
    float c[3][3];
    for (int i = 0; i < 3; ++i) {
        s[i] = std::sqrt(m[i * 4] * m[i * 4] + m[i * 4 + 1] * m[i * 4 + 1] +
                         m[i * 4 + 2] * m[i * 4 + 2]);
        for (int j = 0; j < 3; ++j)
            c[i][j] = s[i] > 0 ? m[i * 4 + j] / s[i] : (i == j ? 1.0f : 0.0f);
    }
    // c[col][row]; standard trace-based conversion of a rotation matrix.
    const float trace = c[0][0] + c[1][1] + c[2][2];
    if (trace > 0) {
        const float k = 0.5f / std::sqrt(trace + 1.0f);
        q = {(c[1][2] - c[2][1]) * k, (c[2][0] - c[0][2]) * k, (c[0][1] - c[1][0]) * k, 0.25f / k};
    } else if (c[0][0] > c[1][1] && c[0][0] > c[2][2]) {
        const float k = 2.0f * std::sqrt(1.0f + c[0][0] - c[1][1] - c[2][2]);
        q = {0.25f * k, (c[1][0] + c[0][1]) / k, (c[2][0] + c[0][2]) / k, (c[1][2] - c[2][1]) / k};
    } else if (c[1][1] > c[2][2]) {
        const float k = 2.0f * std::sqrt(1.0f + c[1][1] - c[0][0] - c[2][2]);
        q = {(c[1][0] + c[0][1]) / k, 0.25f * k, (c[2][1] + c[1][2]) / k, (c[2][0] - c[0][2]) / k};
    } else {
        const float k = 2.0f * std::sqrt(1.0f + c[2][2] - c[0][0] - c[1][1]);
        q = {(c[2][0] + c[0][2]) / k, (c[2][1] + c[1][2]) / k, 0.25f * k, (c[0][1] - c[1][0]) / k};
    }
}

Quaternion slerp(const Quaternion& a, Quaternion b, float t)
{
    float dot = a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
    if (dot < 0) {
        dot = -dot;
        for (float& v : b)
            v = -v;
    }
    float wa = 1 - t, wb = t;
    if (dot < 0.9995f) {
        const float angle = std::acos(dot);
        const float sinAngle = std::sin(angle);
        wa = std::sin((1 - t) * angle) / sinAngle;
        wb = std::sin(t * angle) / sinAngle;
    }
    Quaternion r;
    float length = 0;
    for (int i = 0; i < 4; ++i) {
        r[i] = wa * a[i] + wb * b[i];
        length += r[i] * r[i];
    }
    length = std::sqrt(length);
    for (float& v : r)
        v /= length;
    return r;
}

FieldContainer::FieldContainer() : m_id(FieldContainerFactory::the()->registerContainer(this)) {}

FieldContainer::~FieldContainer() { FieldContainerFactory::the()->unregisterContainer(m_id); }

void FieldContainer::changed(BitVector, UInt32)
{
    oxController::setModified(true);
    oxController::updateRender();
}

void ChangeList::addChanged(const FieldContainer* container, BitVector mask)
{
    m_entries.push_back({container->getId(), mask});
}

ChangeList* WinThreadBase::getCurrentChangeList()
{
    static ChangeList list;
    return &list;
}

void commitChanges(FieldContainer* container, BitVector mask)
{
    if (!container)
        return;
    if (ChangeList* list = WinThreadBase::getCurrentChangeList())
        list->addChanged(container, mask);
    if (!FieldContainerPtr::_ignore_change)
        container->changed(mask, 0);
}

FieldContainerFactory* FieldContainerFactory::the()
{
    static FieldContainerFactory factory;
    return &factory;
}

FieldContainer* FieldContainerFactory::getContainer(UInt32 id) const
{
    const auto it = registry().find(id);
    return it == registry().end() ? nullptr : it->second;
}

UInt32 FieldContainerFactory::registerContainer(FieldContainer* container)
{
    const UInt32 id = nextId++;
    registry()[id] = container;
    return id;
}

void FieldContainerFactory::unregisterContainer(UInt32 id) { registry().erase(id); }

size_t FieldContainerFactory::getNumContainers() const { return registry().size(); }

Node::Node(std::shared_ptr<NodeCore> core, const std::string& name)
    : m_name(name), m_core(std::move(core))
{}

NodePtr Node::addChild(std::unique_ptr<Node> child)
{
    child->m_parent = this;
    m_children.push_back(std::move(child));
    return m_children.back().get();
}

std::unique_ptr<Node> Node::subChild(NodePtr child)
{
    const auto it =
        std::find_if(m_children.begin(), m_children.end(),
                     [child](const std::unique_ptr<Node>& c) { return c.get() == child; });
    if (it == m_children.end())
        return nullptr;
    std::unique_ptr<Node> detached = std::move(*it);
    m_children.erase(it);
    detached->m_parent = nullptr;
    return detached;
}

UberCameraBase::UberCameraBase() : m_tonemapping(std::make_shared<TonemappingSettingsBase>()) {}

void UberCameraBase::copyView(const UberCameraBase& other)
{
    position = other.position;
    orientation = other.orientation;
    setFov(other.getFov());
    setFovMode(other.getFovMode());
    setNear(other.getNear());
    setFar(other.getFar());
}

bool RaytracingAttachment::overridesAnything() const
{
#define OX_RAYTRACING_OVERRIDE_ANY(name, start) m_override##name ||
    return OX_RAYTRACING_OVERRIDES(OX_RAYTRACING_OVERRIDE_ANY) false;
#undef OX_RAYTRACING_OVERRIDE_ANY
}

#define OX_RAYTRACING_OVERRIDE_SWITCH(Setting, start)                                              \
    void UberMaterialBase::setOverride##Setting(bool on)                                           \
    {                                                                                              \
        if (oxCallTrace::isEnabled())                                                              \
            oxCallTrace::record("osg::UberMaterialBase::setOverride" #Setting,                     \
                                this->name + ", " + (on ? "true" : "false"));                      \
        if (!m_raytracing || m_raytracing->getOverride##Setting() == on)                           \
            return;                                                                                \
        m_raytracing->setOverride##Setting(on);                                                    \
        commitChanges(this, RaytracingFieldMask);                                                  \
    }                                                                                              \
    bool UberMaterialBase::getOverride##Setting() const                                            \
    {                                                                                              \
        return m_raytracing && m_raytracing->getOverride##Setting();                               \
    }
OX_RAYTRACING_OVERRIDES(OX_RAYTRACING_OVERRIDE_SWITCH)
#undef OX_RAYTRACING_OVERRIDE_SWITCH

int UberMaterial::getBrdfMode() { return brdfMode; }
void UberMaterial::setBrdfMode(int mode) { brdfMode = mode; }
UInt32 UberMaterial::getRenderingMode() { return renderingMode; }
void UberMaterial::setRenderingMode(UInt32 mode) { renderingMode = mode; }

} // namespace osg
