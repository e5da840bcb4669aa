#include <gtest/gtest.h>

#include "sequence/Messagelanguage.h"
#include "transport/Usbclass.h"

namespace tavena {
namespace {

const char* kFixture = TAVENA_SOURCE_DIR "/tests/fixtures/sysfs";

std::vector<std::string> Names(const UsbClass& usb) {
  std::vector<std::string> names;
  for (const auto& r : usb.Records()) names.push_back(r.port_name);
  return names;
}

TEST(UsbclassPosix, FixtureTreeMapsOntoDeviceRecords) {
  UsbClass usb;
  usb.SetSysfsRoot(kFixture);
  ASSERT_TRUE(usb.Discover());
  // tty1 has no device; ttyS1 is an empty UART slot.
  EXPECT_EQ(Names(usb), (std::vector<std::string>{"/dev/ttyACM0", "/dev/ttyPRN", "/dev/ttyS0",
                                                  "/dev/ttyUSB0"}));
  const DeviceRecord& printer = usb.Records()[0];
  EXPECT_EQ(printer.hardware_id, "USB\\VID_7A7A&PID_0001&REV_0110");
  EXPECT_EQ(printer.compatible_ids, "USB\\Class_02&SubClass_02&Prot_01");
  EXPECT_EQ(printer.description, "TAVENA LUMEN USB");
  EXPECT_EQ(printer.device_kind, 1);
  EXPECT_EQ(printer.vendor, 0x7A7Au);
  EXPECT_EQ(printer.revision, 0x110u);
  EXPECT_EQ(printer.port_number, 1);
  EXPECT_TRUE(IsPrinterVendor(printer));

  const DeviceRecord& bare = usb.Records()[1];
  EXPECT_EQ(bare.port_number, 0);
  EXPECT_EQ(bare.hardware_id, "platform:fiscal-uart");

  const DeviceRecord& uart = usb.Records()[2];
  EXPECT_EQ(uart.hardware_id, "ACPI\\PNP0501");
  EXPECT_EQ(uart.description, "Communications Port");
  EXPECT_EQ(uart.port_number, 1);

  const DeviceRecord& ftdi = usb.Records()[3];
  EXPECT_EQ(ftdi.hardware_id, "USB\\VID_0403&PID_6001&REV_0600");
  EXPECT_EQ(ftdi.identifier, "PID_6001");
  EXPECT_EQ(ftdi.vendor, 0x403u);
  EXPECT_FALSE(IsPrinterVendor(ftdi));
}

TEST(UsbclassPosix, OptionsOnTheFixtureTree) {
  UsbClass usb;
  usb.SetSysfsRoot(kFixture);
  usb.numbered_only = true;
  usb.all_devices = true;
  ASSERT_TRUE(usb.Discover());
  EXPECT_EQ(Names(usb),
            (std::vector<std::string>{"/dev/ttyACM0", "/dev/ttyS0", "/dev/ttyS1", "/dev/ttyUSB0"}));
  usb.vendor_filter = true;
  usb.report = true;
  ASSERT_TRUE(usb.Discover());
  EXPECT_EQ(Names(usb), (std::vector<std::string>{"/dev/ttyACM0"}));
  const std::string& report = usb.Report();
  EXPECT_NE(report.find("HARDWAREID:    USB\\VID_7A7A&PID_0001&REV_0110\r\n"
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
      << report;
  EXPECT_NE(report.find("Version:            1.10\r\n"), std::string::npos);
  EXPECT_EQ(report.find("ttyUSB0"), std::string::npos);

  usb.vendor_filter = false;
  ASSERT_TRUE(usb.Discover());
  EXPECT_NE(usb.Report().find("Driver:        ftdi_sio\r\n"), std::string::npos);
  EXPECT_NE(usb.Report().find("Driver:        serial\r\nMfg:           \r\nEnumerator:    PNP\r\n"),
            std::string::npos);
}

TEST(UsbclassPosix, MissingTreeIsAFailureWithReason) {
  MessageLanguage = 0;
  UsbClass usb;
  usb.SetSysfsRoot("/nonexistent/sysfs");
  EXPECT_FALSE(usb.Discover());
  EXPECT_TRUE(usb.Records().empty());
  EXPECT_EQ(usb.ErrorText().find("Krytyczny b\xB3\xB9"
                                 "d w poszukiwaniu portu.\r\n"),
            0u);
}

}  // namespace
}  // namespace tavena
