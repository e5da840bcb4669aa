// Port discovery on a fixture copy of /sys; the summaries and the port
// lists are checked through the port list window (tests/gui/Ports_test.cpp).
#include <gtest/gtest.h>

#include "sequence/Messagelanguage.h"
#include "transport/Usbclass.h"

namespace tavena {
namespace {

TEST(UsbclassPosix, FixtureTreeMapsOntoDeviceRecords) {
  UsbClass usb;
  usb.SetSysfsRoot(TAVENA_SOURCE_DIR "/tests/fixtures/sysfs");
  ASSERT_TRUE(usb.Discover());
  ASSERT_EQ(usb.Records().size(), 4u);  // tty1 has no device; ttyS1 is an empty UART slot
  EXPECT_EQ(usb.Records()[0].description, "TAVENA LUMEN USB");
  EXPECT_EQ(usb.Records()[0].device_kind, 1);
  EXPECT_EQ(usb.Records()[1].port_name, "/dev/ttyPRN");
  EXPECT_EQ(usb.Records()[1].hardware_id, "platform:fiscal-uart");
  EXPECT_EQ(usb.Records()[3].hardware_id, "USB\\VID_0403&PID_6001&REV_0600");
  EXPECT_FALSE(IsPrinterVendor(usb.Records()[3]));

  usb.numbered_only = usb.all_devices = usb.vendor_filter = usb.report = true;
  ASSERT_TRUE(usb.Discover());
  ASSERT_EQ(usb.Records().size(), 1u);
  EXPECT_EQ(usb.Records()[0].port_name, "/dev/ttyACM0");
  EXPECT_EQ(usb.Report().find("ttyUSB0"), std::string::npos);
  EXPECT_NE(
      usb.Report().find("HARDWAREID:    USB\\VID_7A7A&PID_0001&REV_0110\r\n"
                        "COMPATIBLEIDS: USB\\Class_02&SubClass_02&Prot_01\r\n"
                        "FRIENDLYNAME:  TAVENA LUMEN USB (/dev/ttyACM0)\r\n"
                        "Class Descr:   Ports\r\n"
                        "Class Guid:    {4D36E978-E325-11CE-BFC1-08002BE10318}\r\n"
                        "Config flags:  0\r\n"
                        "Driver desc:   TAVENA LUMEN USB\r\n"
                        "Driver:        cdc_acm\r\n"
                        "Mfg:           TAVENA\r\n"
                        "Enumerator:    USB\r\n"
                        "Physical name: /devices/pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0\r\n"),
      std::string::npos)
      << usb.Report();
  usb.vendor_filter = false;
  ASSERT_TRUE(usb.Discover());
  EXPECT_NE(usb.Report().find("Driver:        serial\r\nMfg:           \r\nEnumerator:    PNP\r\n"),
            std::string::npos);

  MessageLanguage = 0;
  usb.SetSysfsRoot("/nonexistent/sysfs");
  EXPECT_FALSE(usb.Discover());
  EXPECT_EQ(usb.ErrorText().find("Krytyczny b\xB3\xB9"
                                 "d w poszukiwaniu portu.\r\n"),
            0u);
}

}  // namespace
}  // namespace tavena
