#pragma once

// What the binding files of the window's tabs share: quiet writes to widgets, and the rows of
// simple widgets. A simple widget shows one value and writes it through one slot; its row
// drives both its connection and its refresh.

#include "oxLiveParameters.h"
#include "oxRenderSettings.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>

#include <variant>

namespace oxBindings {

using Self = oxRenderSettings;

/// Writes to a widget without letting it signal back into a slot.
template <typename W, typename F>
void quiet(W* widget, F&& write)
{
    const QSignalBlocker blocker(widget);
    write(widget);
}

inline void quietChecked(QAbstractButton* button, bool on)
{
    quiet(button, [on](QAbstractButton* b) { b->setChecked(on); });
}

inline void quietEnabled(QWidget* widget, bool on)
{
    quiet(widget, [on](QWidget* w) { w->setEnabled(on); });
}

inline void quietVisible(QWidget* widget, bool on)
{
    quiet(widget, [on](QWidget* w) { w->setVisible(on); });
}

inline void quietIndex(QComboBox* box, int index)
{
    quiet(box, [index](QComboBox* b) { b->setCurrentIndex(index); });
}

inline void quietValue(QSpinBox* box, int value)
{
    quiet(box, [value](QSpinBox* b) { b->setValue(value); });
}

/// A slider that can't hold the value is widened to it; sliders are never narrowed.
inline void quietSlider(QSlider* slider, int value, bool widen = true)
{
    quiet(slider, [value, widen](QSlider* s) {
        if (widen && value > s->maximum())
            s->setMaximum(value);
        s->setValue(value);
    });
}

/// Where a simple widget's value lives: a live host parameter (oxLiveField) or a field of the
/// current record.
using RecordField = std::variant<bool oxRenderSettingsPreset::*, int oxRenderSettingsPreset::*>;

/// A check box and its flag. The host's override flags say "ignore" where the boxes say
/// "allow": invert.
template <typename Field>
struct Toggle {
    QAbstractButton* widget;
    void (Self::*slot)(bool);
    Field field;
    bool invert = false;
};

/// A combo box whose index is the value. A row with a null slot refreshes only.
template <typename Field>
struct Choice {
    QComboBox* widget;
    void (Self::*slot)(int);
    Field field;
};

/// A spin box and its number.
template <typename Field>
struct Number {
    QSpinBox* widget;
    void (Self::*slot)(int);
    Field field;
};

template <typename Field>
void connectRow(Self* window, const Toggle<Field>& row)
{
    if (row.slot)
        QObject::connect(row.widget, &QAbstractButton::toggled, window, row.slot);
}

template <typename Field>
void connectRow(Self* window, const Choice<Field>& row)
{
    if (row.slot)
        QObject::connect(row.widget, QOverload<int>::of(&QComboBox::activated), window, row.slot);
}

template <typename Field>
void connectRow(Self* window, const Number<Field>& row)
{
    QObject::connect(row.widget, QOverload<int>::of(&QSpinBox::valueChanged), window, row.slot);
}

/// Shows a row's value; value(field) reads it from its store.
template <typename Field, typename Value>
void refreshRow(const Toggle<Field>& row, Value&& value)
{
    quietChecked(row.widget, (value(row.field) != 0) != row.invert);
}

template <typename Field, typename Value>
void refreshRow(const Choice<Field>& row, Value&& value)
{
    quietIndex(row.widget, value(row.field));
}

template <typename Field, typename Value>
void refreshRow(const Number<Field>& row, Value&& value)
{
    quietValue(row.widget, value(row.field));
}

/// A slider and a spin box that both write one number. Widen: the slider widens to a value
/// beyond its end; Keep: it never does; Own: the tab refreshes the pair with code of its own.
template <typename Field>
struct Pair {
    enum Refresh { Widen, Keep, Own };
    QSlider* slider;
    QSpinBox* spinBox;
    void (Self::*slot)(int);
    Field field;
    Refresh refresh = Widen;
};

template <typename Field>
void connectRow(Self* window, const Pair<Field>& row)
{
    QObject::connect(row.slider, &QSlider::valueChanged, window, row.slot);
    QObject::connect(row.spinBox, QOverload<int>::of(&QSpinBox::valueChanged), window, row.slot);
}

template <typename Field, typename Value>
void refreshRow(const Pair<Field>& row, Value&& value)
{
    if (row.refresh == Pair<Field>::Own)
        return;
    const int number = value(row.field);
    quietSlider(row.slider, number, row.refresh == Pair<Field>::Widen);
    quietValue(row.spinBox, number);
}

template <typename Rows>
void connectRows(Self* window, const Rows& rows)
{
    for (const auto& row : rows)
        connectRow(window, row);
}

template <typename Rows, typename Value>
void refreshRows(const Rows& rows, Value&& value)
{
    for (const auto& row : rows)
        refreshRow(row, value);
}

/// Writes a widget's value into the live store of field and into the current record.
template <typename T>
void writeLiveAndRecord(oxRenderSettingsPreset& record, T oxRenderSettingsPreset::*field,
                        oxNonDeduced<T> value)
{
    record.*field = value;
    writeLiveParameter(field, value);
}

/// The value of a live row, from the host.
inline int live(const oxLiveField& field) { return readLiveInt(field); }

/// The value of a record row, from record.
inline auto inRecord(const oxRenderSettingsPreset& record)
{
    return [&record](const RecordField& field) {
        return std::visit([&record](auto f) { return static_cast<int>(record.*f); }, field);
    };
}

} // namespace oxBindings
