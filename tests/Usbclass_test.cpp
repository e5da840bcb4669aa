#include "transport/Usbclass.h"

#include <gtest/gtest.h>

#include "sequence/Messagelanguage.h"

namespace tavena {
namespace {

TEST(Usbclass, DeviceKindFollowsTheDescriptionRulesInOrder) {
  const std::pair<const char*, int> cases[] = {{"Tavena Lumen USB (COM3)", 1},
                                               {"SOLIDA USB EJ COM1,", 2},  // rule 2 before 5
                                               {"Kopia elektroniczna", 3},
                                               {"QX-1 COM0", 4},
                                               {"QX-1 COM1", 5},
                                               {"Drukarka COM1, EJ", 5},
                                               {"EJ COM1,", 0},  // "EJ" must not stand first
                                               {"Drukarka COM1 EJ", 0},
                                               {"Korvus COM0", 6},
                                               {"korvus com1", 7},
                                               {"KORVUS COM1, EJ", 7},  // a KORVUS is never kind 5
                                               {"Communications Port", 0}};
  for (const auto& [description, kind] : cases)
    EXPECT_EQ(DeviceKindFromDescription(description), kind) << description;
}

TEST(Usbclass, RecordSummary) {
  MessageLanguage = 1;
  DeviceProperties p;
  p.hardware_id = "USB\\VID_7A7A&PID_0002&REV_0215";
  p.instance_id = "USB\\VID_7A7A&PID_0002\\6&1A2B&3F&7&";
  p.friendly_name = "Tavena Solida USB (COM12)";
  p.device_description = "SOLIDA USB";
  const DeviceRecord r = RecordFromProperties(p);
  EXPECT_TRUE(IsPrinterVendor(r));
  // Instance parts: last non-empty "7", 0x3F before it, "1A2B" read as 1: serial 0x13F.
  // The other lines' layout is checked through the port list window (gui/Ports_test).
  EXPECT_NE(RecordSummary(r).find("SystemID:           13F\r\nNumer systemowy:    7\r\n"
                                  "Numer urzadzenia:   12\r\nIdentyfikator:      PID_0002\r\n"
                                  "Nazwa urzadzenia:   com12\r\nKod urzadzenia:     2\r\n"),
            std::string::npos)
      << RecordSummary(r);
  p.friendly_name = "Modem";
  EXPECT_EQ(RecordFromProperties(p).port_number, 0);
  EXPECT_EQ(RecordFromProperties(p).port_name, "No definition serial port");
  MessageLanguage = 0;
  EXPECT_EQ(RecordFromProperties(p).port_name, "Port szeregowy niezdefiniowany");
  const uint8_t d4[8] = {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18};
  EXPECT_EQ(FormatClassGuid(0x4D36E978, 0xE325, 0x11CE, d4),
            "{4D36E978-E325-11CE-BFC1-08002BE10318}");
}

// What the options keep is checked on the sysfs fixture (Usbclass_posix_test).
TEST(Usbclass, VendorFilterAndErrors) {
  UsbClass usb;
  usb.vendor_filter = true;
  EXPECT_FALSE(usb.PassesVendorFilter("FTDIBUS\\VID_0403+PID_6001"));
  EXPECT_TRUE(usb.PassesVendorFilter("USB\\vid_7a7a&PID_0001\\1"));
  usb.AddError("Krytyczny błąd odczytu urządzeń powiązanych.", "Drugi.");
  EXPECT_EQ(usb.ErrorText(),
            "Krytyczny b\xB3\xB9"
            "d odczytu urz\xB9"
            "dze\xF1 powi\xB9zanych.\r\nDrugi.\r\n");
}

}  // namespace
}  // namespace tavena
