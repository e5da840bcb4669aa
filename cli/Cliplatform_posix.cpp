#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "Cliplatform.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  return std::vector<std::string>(argv, argv + argc);
}

std::string NativePath(const std::string& utf8) {
  return utf8;
}

void PrepareTerminal() {}

bool StdoutIsTerminal() {
  return isatty(STDOUT_FILENO) == 1;
}

std::string ConfigFolder() {
  const char* xdg = std::getenv("XDG_CONFIG_HOME");
  if (xdg != nullptr && *xdg != '\0') return std::string(xdg) + "/tavena";
  const char* home = std::getenv("HOME");
  return std::string(home != nullptr ? home : ".") + "/.config/tavena";
}

std::string OpenFailureAdvice(int system_error) {
  if (system_error == EACCES || system_error == EPERM)
    return MsgUtf8(
        "Brak uprawnień do portu: dodaj użytkownika do grupy dialout "
        "(sudo usermod -aG dialout $USER) i zaloguj się ponownie.",
        "No permission for the port: add the user to the dialout group "
        "(sudo usermod -aG dialout $USER) and log in again.");
  if (system_error == ENOENT || system_error == ENXIO || system_error == ENODEV)
    return MsgUtf8("Nie ma takiego portu.", "There is no such port.");
  if (system_error == EBUSY) return MsgUtf8("Port jest zajęty.", "The port is busy.");
  return {};
}

}  // namespace tavena
