// The File Output tab: file name, image format, animation, render passes and metadata. These
// settings live in the current record only; the render view sees none of them but the
// premultiply flag.

#include "oxRenderSettingsBindingSupport.h"
#include "oxRenderSettingsKeys.h"

#include "QOXColorManipulator.h"
#include "QOXMultiLevelComboBox.h"
#include "QOXVec2Control.h"
#include "oxFile.h"
#include "oxImageMetaData.h"
#include "oxLog.h"
#include "oxMenuComboBox.h"
#include "oxRaytracer.h"
#include "oxScene.h"
#include "oxSceneServices.h"

#include <QGroupBox>
#include <QLineEdit>

#include <array>

using namespace oxBindings;

namespace {

using P = oxRenderSettingsPreset;

// Metadata: the four single flags and the raytracing settings group (image, animation, passes,
// raytracing).
constexpr int kEmbedRenderSettingsMask = 120;

std::vector<Toggle<RecordField>> recordToggles(Self& w)
{
    return {
        {w._timeStamp, &Self::changedUseTimestamp, &P::timeStamp},
        {w._renderAnimation, &Self::changedRenderAnimation, &P::renderAnimation},
        {w._use_clip_range, &Self::changedUseClipRange, &P::useClipRange},
        {w._tonemap_hdr, &Self::changedTonemapHDR, &P::tonemap_hdr},
        {w._alpha, &Self::changedAlpha, &P::alpha},
        {w._premultiply, &Self::changedPremultiply, &P::premultiply},
        {w._tiff_hdr, &Self::changedTiffHDR, &P::tiffHDR},
        {w._exr_half, &Self::changedExrHalf, &P::exrHalf},
        {w._use_multi_layer, &Self::changedUseMultiLayer, &P::multiLayer},
    };
}

std::vector<Choice<RecordField>> recordChoices(Self& w)
{
    return {
        {w._animType, &Self::changedAnimationType, &P::animationType},
        {w._animFormatCB, &Self::changedAnimationFormat, &P::exportType},
        {w._icc_profile, &Self::changedICCProfile, &P::iccProfileID},
    };
}

std::vector<Number<RecordField>> recordNumbers(Self& w)
{
    return {
        {w._start, &Self::changedStart, &P::startFrame},
        {w._stop, &Self::changedStop, &P::stopFrame},
        {w._frame_step, &Self::changedFrameStep, &P::stepFrame},
        {w._fps, &Self::changedFPS, &P::fps},
    };
}

// A metadata check box: its slot and the bits it stands for.
struct Embed {
    QCheckBox* box;
    void (Self::*slot)(bool);
    int mask;
};

std::array<Embed, 5> embeds(Self& w)
{
    return {{
        {w._embed_camera, &Self::changedEmbedCamera, CAMERA_DATA},
        {w._embed_node_visibilities, &Self::changedEmbedNodeVisibilities,
         SCENEGRAPH_VISIBILITY_STATE},
        {w._embed_switch_node_choices, &Self::changedEmbedSwitchNodeChoices,
         SCENEGRAPH_SWITCH_CHOICE_STATE},
        {w._embed_switch_material_choices, &Self::changedEmbedSwitchMaterialChoices,
         SWITCH_MATERIAL_CHOICE_STATE},
        {w._embed_render_settings, &Self::changedEmbedRenderSettings, kEmbedRenderSettingsMask},
    }};
}

} // namespace

void oxRenderSettings::connectOutputBindings()
{
    connectRows(this, recordToggles(*this));
    connectRows(this, recordChoices(*this));
    connectRows(this, recordNumbers(*this));
    connect(_ssfactor, QOverload<int>::of(&QComboBox::activated), this, &Self::changedSSFactor);
    connect(_animationCB, &QComboBox::textActivated, this, &Self::changedClip);
    connect(_quickFilename, &QLineEdit::editingFinished, this, &Self::changedFilename);
    connect(_alpha_color, &QOXColorManipulator::colorChanged, this, &Self::changedBackgroundColor);
    // _export_renderpasses is a checkable group box, not a button.
    connect(_export_renderpasses, &QGroupBox::toggled, this, &Self::changedExportRenderpasses);

    // The pass check boxes, from the pass table; a twin follows its partner through the
    // form's own link, so only the first box of a flag is connected.
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        if (!info.widget)
            continue;
        auto* box = findChild<QAbstractButton*>(QLatin1String(info.widget));
        if (!box) {
            oxLog::error("oxRenderSettings: the form has no pass check box '%s'.", info.widget);
            continue;
        }
        const PassFlag flag = info.flag;
        connect(box, &QAbstractButton::toggled, this,
                [this, flag](bool on) { changedExportPass(flag, on); });
    }

    // The metadata slots stay unconnected where the writer can't embed metadata; the window
    // then hides the section.
    if (oxImageMetaData::isXMPSupported()) {
        for (const Embed& embed : embeds(*this))
            connect(embed.box, &QAbstractButton::toggled, this, embed.slot);
        connect(_embed_all, &QAbstractButton::toggled, this, &Self::changedEmbedAll);
        auto& map = oxImageMetaData::getRenderSettingsXMPToMsgMap();
        if (map.empty()) {
            for (const oxXmpProperty& property : kXmpProperties)
                map[property.xmp] = findSceneKey(property.field)->key;
        }
    } else {
        _metaDataCF->hide();
    }
}

void oxRenderSettings::changedUseTimestamp(bool on)
{
    currentPreset.timeStamp = on;
    updateGUI();
}

void oxRenderSettings::changedFilename()
{
    currentPreset.filename = _quickFilename->text().toUtf8().toStdString();
    updateGUI();
}

void oxRenderSettings::changedRenderAnimation(bool on)
{
    currentPreset.renderAnimation = on;
    updateGUI();
}

void oxRenderSettings::changedUseClipRange(bool on)
{
    currentPreset.useClipRange = on;
    updateGUI();
}

void oxRenderSettings::changedAnimationType(int type)
{
    currentPreset.animationType = type;
    updateGUI();
}

void oxRenderSettings::changedAnimationFormat(int format)
{
    currentPreset.exportType = format;
    updateGUI();
}

void oxRenderSettings::changedClip(const QString& clip)
{
    currentPreset.clip = clip.toUtf8().toStdString();
    updateGUI();
}

void oxRenderSettings::changedStart(int frame)
{
    currentPreset.startFrame = frame;
    updateRenderStatistics();
}

void oxRenderSettings::changedStop(int frame)
{
    currentPreset.stopFrame = frame;
    updateRenderStatistics();
}

void oxRenderSettings::changedFrameStep(int step)
{
    currentPreset.stepFrame = step;
    updateRenderStatistics();
}

void oxRenderSettings::changedFPS(int fps) { currentPreset.fps = fps; }

void oxRenderSettings::changedSSFactor(int index) { currentPreset.ssFactor = index != 0 ? 3 : 0; }

void oxRenderSettings::changedTonemapHDR(bool on) { currentPreset.tonemap_hdr = on; }

void oxRenderSettings::changedAlpha(bool on) { currentPreset.alpha = on; }

void oxRenderSettings::changedBackgroundColor(float r, float g, float b)
{
    currentPreset.backgroundColorR = r;
    currentPreset.backgroundColorG = g;
    currentPreset.backgroundColorB = b;
}

void oxRenderSettings::changedTiffHDR(bool on) { currentPreset.tiffHDR = on; }

void oxRenderSettings::changedExrHalf(bool on) { currentPreset.exrHalf = on; }

void oxRenderSettings::changedICCProfile(int index) { currentPreset.iccProfileID = index; }

void oxRenderSettings::changedPremultiply(bool on)
{
    currentPreset.premultiply = on;
    oxRaytracer::setPremultiply(on);
}

void oxRenderSettings::changedUseMultiLayer(bool on)
{
    currentPreset.multiLayer = on;
    updateRenderStatistics();
}

void oxRenderSettings::setMetaDataFlag(int mask, bool on)
{
    if (on)
        currentPreset.metaDataFlags |= mask;
    else
        currentPreset.metaDataFlags &= ~mask;
}

void oxRenderSettings::changedEmbedCamera(bool on) { setMetaDataFlag(CAMERA_DATA, on); }

void oxRenderSettings::changedEmbedNodeVisibilities(bool on)
{
    setMetaDataFlag(SCENEGRAPH_VISIBILITY_STATE, on);
}

void oxRenderSettings::changedEmbedSwitchNodeChoices(bool on)
{
    setMetaDataFlag(SCENEGRAPH_SWITCH_CHOICE_STATE, on);
}

void oxRenderSettings::changedEmbedSwitchMaterialChoices(bool on)
{
    setMetaDataFlag(SWITCH_MATERIAL_CHOICE_STATE, on);
}

void oxRenderSettings::changedEmbedRenderSettings(bool on)
{
    setMetaDataFlag(kEmbedRenderSettingsMask, on);
}

void oxRenderSettings::changedEmbedAll(bool on)
{
    for (const Embed& embed : embeds(*this))
        setMetaDataFlag(embed.mask, on);
    updateGUI();
}

void oxRenderSettings::changedExportRenderpasses(bool on)
{
    currentPreset.renderpasses = on;
    updateRenderStatistics();
}

void oxRenderSettings::changedExportPass(PassFlag flag, bool on)
{
    currentPreset.passFlag(flag) = on;
    updateRenderStatistics();
}

// Every row of the pass table has its slot; all of them store through changedExportPass.
#define OX_PASS_FLAG_SLOT(enumName, ...)                                                           \
    void oxRenderSettings::changedExport##enumName##Pass(bool on)                                  \
    {                                                                                              \
        changedExportPass(PassFlag::enumName, on);                                                 \
    }
OX_RENDER_PASS_FLAGS(OX_PASS_FLAG_SLOT)
#undef OX_PASS_FLAG_SLOT

void oxRenderSettings::setRenderPasses(const std::vector<std::string>& names)
{
    for (bool oxRenderSettingsPreset::*field : kPassFlagFields)
        currentPreset.*field = false;
    for (const std::string& name : names) {
        PassFlag flag;
        if (findPassFlagByScriptName(name, flag))
            currentPreset.passFlag(flag) = true;
    }
    updateGUI();
    updateRenderStatistics();
}

std::vector<std::string> oxRenderSettings::getRenderPasses() const
{
    std::vector<std::string> names;
    for (PassFlag flag : kPassFlagScriptOrder) {
        if (currentPreset.getPassFlag(flag))
            names.push_back(passFlagInfo(flag).scriptName());
    }
    return names;
}

std::vector<std::string> oxRenderSettings::getClipNames()
{
    std::vector<std::string> names;
    if (oxAnimManager* manager = oxAnimManager::the()) {
        if (osg::NodePtr root = manager->clipStructureRoot()) {
            for (size_t i = 0; i < root->getNChildren(); ++i) {
                if (osg::NodePtr clip = root->getChild(i))
                    names.push_back(oxNodeUtils::getName(clip));
            }
        }
    }
    return names;
}

void oxRenderSettings::updateClipList()
{
    const QString remembered = _animationCB->currentText();
    _animationCB->clear();
    quiet(_animationCB, [&remembered](QComboBox* box) {
        box->addItem(QString());
        for (const std::string& clip : getClipNames())
            box->addItem(QString::fromStdString(clip));
        const int found = box->findText(remembered);
        box->setCurrentIndex(found >= 0 ? found : 0);
    });
}

void oxRenderSettings::updateOutputWidgets()
{
    const oxRenderSettingsPreset& p = currentPreset;
    quiet(_quickFilename, [&p](QLineEdit* edit) {
        edit->setText(QString::fromStdString(oxFile::convertSeparators(p.filename)));
    });
    refreshRows(recordToggles(*this), inRecord(p));
    refreshRows(recordChoices(*this), inRecord(p));
    refreshRows(recordNumbers(*this), inRecord(p));
    const int clip = _animationCB->findText(QString::fromStdString(p.clip), Qt::MatchCaseSensitive);
    if (clip >= 0)
        quietIndex(_animationCB, clip);

    // The view chooser shows the record's view; a view that is gone shows "Current".
    const osg::NodePtr viewNode = p.view.empty() ? nullptr : p.getViewNode();
    const bool track = viewNode && oxNodeUtils::isCameraTrack(viewNode);
    quiet(_view, [viewNode](oxMenuComboBox* view) {
        const unsigned id = viewNode ? viewNode->getId() : 0u;
        if (view->currentId() != id && (id == 0 || !view->change(QVariant(id))))
            view->reset();
    });

    const bool animation = p.renderAnimation;
    const bool timeline = animation && !track;
    const bool clipType = _animType->currentIndex() == 0;
    for (QWidget* w : {static_cast<QWidget*>(_animType), static_cast<QWidget*>(_typeLabel)})
        quietEnabled(w, timeline);
    for (QWidget* w : std::initializer_list<QWidget*>{_animationCB, _labelClip, _use_clip_range})
        quietEnabled(w, timeline && clipType);
    for (QWidget* w : std::initializer_list<QWidget*>{_labelFormat, _animFormatCB})
        quietEnabled(w, animation);
    const bool rangeFromClip = clipType && _use_clip_range->isChecked();
    for (QWidget* w : std::initializer_list<QWidget*>{_start, _startLabel, _stop, _stopLabel})
        quietEnabled(w, !track && !rangeFromClip && animation);
    for (QWidget* w : std::initializer_list<QWidget*>{_framestepLabel, _frame_step})
        quietEnabled(w, animation && _animFormatCB->currentIndex() == 0);
    for (QWidget* w : std::initializer_list<QWidget*>{_fps, _fpsLabel})
        quietEnabled(w, animation && _animFormatCB->currentIndex() == 1);

    quietValue(_dpi, p.getPixelsPerInch());
    quiet(_pixel_size, [&p](QOXVec2Control* c) {
        c->setX(p.pixel_width);
        c->setY(p.pixel_height);
    });
    quiet(_print_size, [&p](QOXVec2Control* c) {
        c->setX(p.printWidth);
        c->setY(p.printHeight);
    });

    const bool region = p.use_render_region;
    quietChecked(_use_region_region, region);
    for (QWidget* w : std::initializer_list<QWidget*>{
             _use_viewport_region, _region_start_label, _region_end_label, _region_start_x,
             _region_start_y, _region_end_x, _region_end_y})
        quietEnabled(w, region);
    quietValue(_region_start_x, p.region_start_x);
    quietValue(_region_start_y, p.region_start_y);
    quietValue(_region_end_x, p.region_end_x);
    quietValue(_region_end_y, p.region_end_y);

    quietIndex(_ssfactor, p.ssFactor != 0 ? 1 : 0);
    quiet(_alpha_color, [&p](QOXColorManipulator* c) {
        c->setColor(p.backgroundColorR, p.backgroundColorG, p.backgroundColorB);
    });
    quietEnabled(_premultiply, p.alpha);

    // A box shows its bits as set when any of them is; "all" when every box shows set.
    const std::array<Embed, 5> boxes = embeds(*this);
    bool all = true;
    for (const Embed& embed : boxes)
        all = all && (p.metaDataFlags & embed.mask) != 0;
    quietChecked(_embed_all, all);
    for (const Embed& embed : boxes) {
        quiet(embed.box, [&p, &embed, all](QCheckBox* box) {
            box->setChecked((p.metaDataFlags & embed.mask) != 0);
            box->setEnabled(!all);
        });
    }

    quiet(_export_renderpasses, [&p](QGroupBox* box) { box->setChecked(p.renderpasses); });
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        for (const char* name : {info.widget, info.twinWidget}) {
            if (!name)
                continue;
            if (auto* box = findChild<QAbstractButton*>(QLatin1String(name)))
                quietChecked(box, p.getPassFlag(info.flag));
        }
    }
}
