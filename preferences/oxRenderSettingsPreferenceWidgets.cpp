#include "oxRenderSettingsPreferenceWidgets.h"

#include "QOXColorManipulator.h"
#include "QOXSlider.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <type_traits>
#include <vector>

namespace {

// Widgets that show one value. A slider may stop short of its spin box, so a group's value is
// read from the member with the widest range.
const std::vector<std::vector<const char*>> kLinkedWidgets = {
    {"_image_samples_spinbox", "_image_samples_slider"},
    {"_interactive_depth_slider", "_interactive_depth_spinbox", "_max_trace_depth_slider",
     "_max_trace_depth_spinbox"},
    {"_stillframe_depth_slider", "_stillframe_depth_spinbox"},
    {"_interactiveQuality", "_interactiveQualitySpinbox", "_basic_interactiveQuality",
     "_basic_interactiveQualitySpinbox"},
    {"_stillFrameQuality", "_stillFrameQualitySpinbox", "_basic_stillFrameQuality",
     "_basic_stillFrameQualitySpinbox"},
    {"_environmentInteractiveQuality", "_environmentInteractiveQualitySpinbox"},
    {"_environmentStillFrameQuality", "_environmentStillFrameQualitySpinbox"},
    {"_photon_trace_depth_spinbox", "_photon_trace_depth_slider"},
    {"_finalgather_quality_spinbox", "_finalgather_quality_slider"},
    {"_interactive_finalgather_quality_spinbox", "_interactive_finalgather_quality_slider"},
};

// Values shown in parts: the row's widget takes the first part, these the others.
constexpr const char* kTimeParts[] = {"_time_hours", "_time_minutes", "_time_seconds"};
constexpr const char* kPositionParts[] = {"_xpos", "_ypos"};

QWidget* child(QWidget* page, const char* name)
{
    return page->findChild<QWidget*>(QString::fromUtf8(name));
}

const std::vector<const char*>* groupOf(const char* name)
{
    for (const auto& group : kLinkedWidgets)
        for (const char* member : group)
            if (std::strcmp(member, name) == 0)
                return &group;
    return nullptr;
}

bool isPart(const char* name, const char* first) { return std::strcmp(name, first) == 0; }

void setNumber(QWidget* widget, double value)
{
    const QSignalBlocker blocker(widget);
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
        button->setChecked(value != 0.0);
    } else if (auto* box = qobject_cast<QComboBox*>(widget)) {
        const int number = static_cast<int>(std::lround(value));
        // Boxes with item data find the value there; the others take it as the index, where a
        // value past the end (a factor stored as 3 in a box of Off and On) selects the last.
        int index = box->count() > 0 && box->itemData(0).isValid()
                        ? box->findData(number)
                        : std::min(number, box->count() - 1);
        if (index >= 0)
            box->setCurrentIndex(index);
    } else if (auto* spin = qobject_cast<QSpinBox*>(widget)) {
        spin->setValue(static_cast<int>(std::lround(value)));
    } else if (auto* doubleSpin = qobject_cast<QDoubleSpinBox*>(widget)) {
        doubleSpin->setValue(value);
    } else if (auto* slider = qobject_cast<QSlider*>(widget)) {
        slider->setValue(static_cast<int>(std::lround(value)));
    } else if (auto* floatSlider = qobject_cast<QOXSlider*>(widget)) {
        floatSlider->setValue(value);
    }
}

double number(QWidget* widget)
{
    if (auto* button = qobject_cast<QAbstractButton*>(widget))
        return button->isChecked() ? 1.0 : 0.0;
    if (auto* box = qobject_cast<QComboBox*>(widget))
        return box->currentData().isValid() ? box->currentData().toInt() : box->currentIndex();
    if (auto* spin = qobject_cast<QSpinBox*>(widget))
        return spin->value();
    if (auto* doubleSpin = qobject_cast<QDoubleSpinBox*>(widget))
        return doubleSpin->value();
    if (auto* slider = qobject_cast<QSlider*>(widget))
        return slider->value();
    if (auto* floatSlider = qobject_cast<QOXSlider*>(widget))
        return floatSlider->value();
    return 0.0;
}

double maximumOf(QWidget* widget)
{
    if (auto* spin = qobject_cast<QSpinBox*>(widget))
        return spin->maximum();
    if (auto* slider = qobject_cast<QSlider*>(widget))
        return slider->maximum();
    return 0.0;
}

void setText(QWidget* widget, const QString& text)
{
    const QSignalBlocker blocker(widget);
    if (auto* box = qobject_cast<QComboBox*>(widget)) {
        const int index = box->findText(text);
        if (index >= 0)
            box->setCurrentIndex(index);
    } else if (auto* line = qobject_cast<QLineEdit*>(widget)) {
        line->setText(text);
    }
}

QString text(QWidget* widget)
{
    if (auto* box = qobject_cast<QComboBox*>(widget))
        return box->currentText();
    if (auto* line = qobject_cast<QLineEdit*>(widget))
        return line->text();
    return QString();
}

// The widget of the row, or its linked member with the widest range.
QWidget* source(QWidget* page, const char* name)
{
    QWidget* widest = child(page, name);
    if (const auto* group = groupOf(name))
        for (const char* member : *group)
            if (QWidget* widget = child(page, member);
                widget && widest && maximumOf(widget) > maximumOf(widest))
                widest = widget;
    return widest;
}

template <typename T>
void show(QWidget* page, const char* name, const T& value)
{
    QWidget* widget = child(page, name);
    if (!widget)
        return;
    if constexpr (std::is_same_v<T, std::string>) {
        setText(widget, QString::fromStdString(value));
    } else if constexpr (std::is_same_v<T, QString>) {
        setText(widget, value);
    } else if constexpr (std::is_same_v<T, std::vector<int>>) {
        if (auto* color = qobject_cast<QOXColorManipulator*>(widget)) {
            const QSignalBlocker blocker(color);
            if (value.size() == 3)
                color->setColor(value[0] / 255.0f, value[1] / 255.0f, value[2] / 255.0f);
        } else if (isPart(name, kPositionParts[0])) {
            for (size_t i = 0; i < std::size(kPositionParts) && i < value.size(); ++i)
                if (QWidget* part = child(page, kPositionParts[i]))
                    setNumber(part, value[i]);
        }
    } else if (isPart(name, kTimeParts[0])) {
        const long long seconds = static_cast<long long>(value);
        const long long parts[] = {seconds / 3600, seconds % 3600 / 60, seconds % 60};
        for (size_t i = 0; i < std::size(kTimeParts); ++i)
            if (QWidget* part = child(page, kTimeParts[i]))
                setNumber(part, static_cast<double>(parts[i]));
    } else {
        setNumber(widget, static_cast<double>(value));
        if (const auto* group = groupOf(name))
            for (const char* member : *group)
                if (QWidget* linked = child(page, member))
                    setNumber(linked, static_cast<double>(value));
    }
}

template <typename T>
T read(QWidget* page, const char* name)
{
    QWidget* widget = source(page, name);
    if (!widget)
        return T();
    if constexpr (std::is_same_v<T, std::string>) {
        return text(widget).toStdString();
    } else if constexpr (std::is_same_v<T, QString>) {
        return text(widget);
    } else if constexpr (std::is_same_v<T, std::vector<int>>) {
        if (auto* color = qobject_cast<QOXColorManipulator*>(widget))
            return {static_cast<int>(std::lround(color->red() * 255.0f)),
                    static_cast<int>(std::lround(color->green() * 255.0f)),
                    static_cast<int>(std::lround(color->blue() * 255.0f))};
        std::vector<int> parts;
        for (const char* part : kPositionParts)
            if (QWidget* partWidget = child(page, part))
                parts.push_back(static_cast<int>(number(partWidget)));
        return parts;
    } else if (isPart(name, kTimeParts[0])) {
        const int factors[] = {3600, 60, 1};
        long long total = 0;
        for (size_t i = 0; i < std::size(kTimeParts); ++i)
            if (QWidget* part = child(page, kTimeParts[i]))
                total += std::max(0LL, static_cast<long long>(number(part))) * factors[i];
        return static_cast<T>(total);
    } else if constexpr (std::is_same_v<T, bool>) {
        return number(widget) != 0.0;
    } else if constexpr (std::is_same_v<T, float>) {
        return static_cast<float>(number(widget));
    } else if constexpr (std::is_same_v<T, unsigned int>) {
        return static_cast<unsigned int>(std::max(0L, std::lround(number(widget))));
    } else {
        return static_cast<T>(std::lround(number(widget)));
    }
}

} // namespace

void showPreference(QWidget* page, const oxPreferenceDefault& row, const oxMessage& data)
{
    if (!page || !row.widget)
        return;
    std::visit(
        [&](const auto& fallback) {
            auto value = fallback;
            if (getFromMessage(data, row.keyName(), value))
                show(page, row.widget, value);
        },
        row.value);
}

oxPreferenceDefault::Value readPreference(QWidget* page, const oxPreferenceDefault& row)
{
    return std::visit(
        [&](const auto& fallback) -> oxPreferenceDefault::Value {
            using T = std::decay_t<decltype(fallback)>;
            if (!page || !row.widget)
                return fallback;
            return read<T>(page, row.widget);
        },
        row.value);
}

void followLinkedWidget(QWidget* page, QWidget* from, int value)
{
    if (!page || !from)
        return;
    const std::string name = from->objectName().toStdString();
    if (const auto* group = groupOf(name.c_str()))
        for (const char* member : *group)
            if (QWidget* linked = child(page, member); linked && linked != from)
                setNumber(linked, value);
}

void linkPreferenceWidgets(QWidget* page, const char* const* skip, int skipCount)
{
    for (const auto& group : kLinkedWidgets) {
        const bool skipped = std::any_of(skip, skip + skipCount, [&group](const char* name) {
            return std::find_if(group.begin(), group.end(), [name](const char* member) {
                       return std::strcmp(member, name) == 0;
                   }) != group.end();
        });
        if (skipped)
            continue;
        for (const char* member : group) {
            QWidget* widget = child(page, member);
            auto follow = [page, widget](int value) { followLinkedWidget(page, widget, value); };
            if (auto* spin = qobject_cast<QSpinBox*>(widget))
                QObject::connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), page, follow);
            else if (auto* slider = qobject_cast<QSlider*>(widget))
                QObject::connect(slider, &QSlider::valueChanged, page, follow);
        }
    }
}
