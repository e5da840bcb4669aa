#include "Fonts.h"

#include <QPalette>
#include <QWidget>

#include "app/Texts.h"

namespace tavena {

SharedFonts& Fonts() {
  static SharedFonts fonts;
  return fonts;
}

QColor ColourFromBgr(int32_t bgr) {
  if (bgr < 0) return QColor();
  return QColor(bgr & 0xFF, (bgr >> 8) & 0xFF, (bgr >> 16) & 0xFF);
}

int32_t BgrFromColour(const QColor& colour) {
  if (!colour.isValid()) return -1;
  return colour.red() | (colour.green() << 8) | (colour.blue() << 16);
}

FontObject MakeFont(const FontSetting& setting) {
  FontObject object;
  object.font.setFamily(FromCp1250(setting.face));
  object.font.setPointSize(setting.size > 0 ? setting.size : 10);
  object.font.setBold(setting.style & kFontBold);
  object.font.setItalic(setting.style & kFontItalic);
  object.font.setUnderline(setting.style & kFontUnderline);
  object.font.setStrikeOut(setting.style & kFontStrikeOut);
  object.colour = ColourFromBgr(setting.colour);
  return object;
}

void StoreFont(const FontObject& object, FontSetting& setting) {
  setting.face = ToCp1250(object.font.family());
  setting.colour = BgrFromColour(object.colour);
  setting.size = object.font.pointSize();
  setting.style = (object.font.bold() ? kFontBold : 0) | (object.font.italic() ? kFontItalic : 0) |
                  (object.font.underline() ? kFontUnderline : 0) |
                  (object.font.strikeOut() ? kFontStrikeOut : 0);
}

void CreateFonts(const SettingsRecord& record) {
  Fonts().info = MakeFont(record.font_info);
  Fonts().edit = MakeFont(record.font_edit);
  Fonts().wind = MakeFont(record.font_wind);
}

void ApplyFont(QWidget* control, const FontObject& font) {
  if (!control) return;
  control->setFont(font.font);
  if (!font.colour.isValid()) return;
  QPalette palette = control->palette();
  palette.setColor(QPalette::WindowText, font.colour);
  palette.setColor(QPalette::Text, font.colour);
  palette.setColor(QPalette::ButtonText, font.colour);
  control->setPalette(palette);
}

void ApplyBackground(QWidget* control, const QColor& colour) {
  if (!control) return;
  QPalette palette = control->palette();
  palette.setColor(QPalette::Base, colour);
  palette.setColor(QPalette::Window, colour);
  control->setPalette(palette);
  control->setAutoFillBackground(true);
}

}  // namespace tavena
