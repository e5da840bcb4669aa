// The three shared fonts (Info, Edit, Wind): made from the settings record,
// stored back into it, and given to controls with their colour.
#pragma once

#include <QColor>
#include <QFont>

#include "app/Settings.h"

class QWidget;

namespace tavena {

struct FontObject {
  QFont font;
  QColor colour;  // invalid: the control keeps its own colour
};

struct SharedFonts {
  FontObject info;
  FontObject edit;
  FontObject wind;
};

// The process-wide fonts.
SharedFonts& Fonts();

// 0x00BBGGRR <-> QColor; -1 is "no colour" (an invalid QColor).
QColor ColourFromBgr(int32_t bgr);
int32_t BgrFromColour(const QColor& colour);

FontObject MakeFont(const FontSetting& setting);
void StoreFont(const FontObject& font, FontSetting& setting);

// Rebuilds the three fonts from the record.
void CreateFonts(const SettingsRecord& record);

// Gives a control the font and, when the font has one, its text colour.
void ApplyFont(QWidget* control, const FontObject& font);
// Sets the background colour of a control.
void ApplyBackground(QWidget* control, const QColor& colour);

}  // namespace tavena
