#pragma once

// How the preferences page's widgets show and give the values of the preference table. A row
// names one widget; widgets that show the same value (a slider beside its spin box, the basic
// and the full quality) follow it, and a value made of parts (a time, a position) is shown
// in the row's widget and its partners.

#include "oxRenderSettingsPreferenceDefaults.h"

class QWidget;
class oxMessage;

/// Shows the value of row in data in its widgets, without letting them signal. A missing key
/// leaves the widgets as they are; one of the wrong type is reported by getFromMessage.
void showPreference(QWidget* page, const oxPreferenceDefault& row, const oxMessage& data);

/// The value the widgets of row show, in the type of the row.
oxPreferenceDefault::Value readPreference(QWidget* page, const oxPreferenceDefault& row);

/// Keeps the widgets that show one value equal when the user moves one of them. The groups
/// whose member is named in skip are left to the caller.
void linkPreferenceWidgets(QWidget* page, const char* const* skip, int skipCount);

/// Sets the other widgets of from's group to value, without letting them signal.
void followLinkedWidget(QWidget* page, QWidget* from, int value);
