#include "Runheader.h"

#include <set>

#include "Tavenaversion.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

namespace {

std::set<std::string>& Keys() {
  static std::set<std::string> keys;
  return keys;
}

std::string KnownOr(const std::string& text) {
  return text.empty() ? Msg("nieznany", "unknown") : text;
}

std::string IdentityText(const RunHeader& h) {
  return Msg("model ", "model ") + KnownOr(h.model) + Msg(", wersja ", ", version ") +
         KnownOr(h.version) + Msg(", numer unikatowy ", ", unique number ") +
         KnownOr(h.unique_number);
}

}  // namespace

std::string RunHeaderLine(const RunHeader& h) {
  return std::string("=== tavena ") + kVersion + "; port " + h.port + ", " +
         std::to_string(h.speed) + " b/s; " + IdentityText(h) + "; " +
         (h.logging_from_start ? Msg("logi od startu programu", "logging since start-up")
                               : Msg("logi włączone później", "logging switched on later")) +
         " ===";
}

std::string IdentityHeaderLine(const RunHeader& h) {
  return Msg("=== Drukarka: ", "=== Printer: ") + IdentityText(h) + " ===";
}

bool FirstTimeInRun(const std::string& key) {
  return Keys().insert(key).second;
}

void ForgetRunHeaders() {
  Keys().clear();
}

}  // namespace tavena
