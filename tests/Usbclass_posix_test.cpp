// Port discovery on a fixture copy of /sys.
#include <gtest/gtest.h>

#include "sequence/Messagelanguage.h"
#include "transport/Usbclass.h"

namespace tavena {
namespace {

std::vector<std::string> Names(const UsbClass& usb) {
  std::vector<std::string> names;
  for (const auto& r : usb.Records()) names.push_back(r.port_name);
  return names;
}

TEST(UsbclassPosix, FixtureTreeMapsOntoDeviceRecords) {
  UsbClass usb;
  usb.SetSysfsRoot(TAVENA_SOURCE_DIR "/tests/fixtures/sysfs");
  ASSERT_TRUE(usb.Discover());
  // tty1 has no device; ttyS1 is an empty UART slot.
  EXPECT_EQ(Names(usb), (std::vector<std::string>{"/dev/ttyACM0", "/dev/ttyPRN", "/dev/ttyS0",
                                                  "/dev/ttyUSB0"}));
  const DeviceRecord& printer = usb.Records()[0];
  EXPECT_EQ(printer.description, "TAVENA LUMEN USB");
  EXPECT_EQ(printer.device_kind, 1);
  EXPECT_EQ(printer.revision, 0x110u);
  EXPECT_EQ(printer.port_number, 1);
  EXPECT_TRUE(IsPrinterVendor(printer));
  EXPECT_EQ(usb.Records()[1].port_number, 0);
  EXPECT_EQ(usb.Records()[1].hardware_id, "platform:fiscal-uart");
  EXPECT_EQ(usb.Records()[2].hardware_id, "ACPI\\PNP0501");
  const DeviceRecord& ftdi = usb.Records()[3];
  EXPECT_EQ(ftdi.hardware_id, "USB\\VID_0403&PID_6001&REV_0600");
  EXPECT_EQ(ftdi.identifier, "PID_6001");
  EXPECT_FALSE(IsPrinterVendor(ftdi));

  usb.numbered_only = usb.all_devices = true;
  ASSERT_TRUE(usb.Discover());
  EXPECT_EQ(Names(usb),
            (std::vector<std::string>{"/dev/ttyACM0", "/dev/ttyS0", "/dev/ttyS1", "/dev/ttyUSB0"}));
  usb.vendor_filter = usb.report = true;
  ASSERT_TRUE(usb.Discover());
  EXPECT_EQ(Names(usb), (std::vector<std::string>{"/dev/ttyACM0"}));
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
  EXPECT_NE(usb.Report().find("Version:            1.10\r\n"), std::string::npos);
  usb.vendor_filter = false;
  ASSERT_TRUE(usb.Discover());
  EXPECT_NE(usb.Report().find("Driver:        ftdi_sio\r\n"), std::string::npos);
  EXPECT_NE(usb.Report().find("Driver:        serial\r\nMfg:           \r\nEnumerator:    PNP\r\n"),
            std::string::npos);

  MessageLanguage = 0;
  usb.SetSysfsRoot("/nonexistent/sysfs");
  EXPECT_FALSE(usb.Discover());
  EXPECT_TRUE(usb.Records().empty());
  EXPECT_EQ(usb.ErrorText().find("Krytyczny b\xB3\xB9"
                                 "d w poszukiwaniu portu.\r\n"),
            0u);
}

}  // namespace
}  // namespace tavena
