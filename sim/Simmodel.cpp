#include "Simmodel.h"

#include <algorithm>
#include <cctype>

namespace tavena {

namespace {

SimModelInfo Printer(std::string name, int type, int subtype, std::string identity,
                     std::string version, std::string unique) {
  SimModelInfo m;
  m.name = std::move(name);
  m.type_code = type;
  m.subtype = subtype;
  m.identity_name = std::move(identity);
  m.version = std::move(version);
  m.unique_number = std::move(unique);
  return m;
}

std::vector<SimModelInfo> Models() {
  std::vector<SimModelInfo> list;
  list.push_back(Printer("LUMEN", 1, 0, "TAVENA LUMEN", "1.05", "BLM01000017"));
  list.push_back(Printer("SOLIDA", 2, 0, "TAVENA SOLIDA", "2.13", "BSL02000233"));
  list.push_back(Printer("SOLIDA EJ", 3, 0, "TAVENA SOLIDA EJ", "3.02", "BSE03000419"));
  list.back().electronic_journal = true;
  list.push_back(Printer("QX-1", 4, 3, "TAVENA QX-1", "4.10", "BQX04000551"));
  list.push_back(Printer("QX-1TR", 6, 4, "TAVENA QX-1TR", "6.01", "BQT06000678"));
  list.back().korvus = true;
  list.push_back(Printer("TM410", 7, 0, "TAVENA TM410", "7.00", "BTM07000802"));
  list.back().electronic_journal = true;
  list.push_back(Printer("MERIDO", 0, 0, "TAVEWA MERIDO", "1.00", "BMR00000091"));
  SimModelInfo copy = Printer("EJ-COPY", 5, 0, "", "", "BEC05000126");
  copy.answers_identity = false;
  copy.electronic_journal = true;
  list.push_back(copy);
  return list;
}

std::string Canonical(std::string_view name) {
  std::string out;
  for (const char c : name) {
    const char u = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    out += (u == '_' || u == '-') && out.size() >= 6 && out.substr(0, 6) == "SOLIDA" ? ' ' : u;
  }
  return out;
}

}  // namespace

std::optional<SimModelInfo> FindSimModel(std::string_view name) {
  std::string wanted = Canonical(name);
  int subtype = -1;
  const size_t colon = wanted.find(':');
  if (colon != std::string::npos) {
    const std::string digit = wanted.substr(colon + 1);
    if (digit.size() != 1 || !std::isdigit(static_cast<unsigned char>(digit[0])))
      return std::nullopt;
    subtype = digit[0] - '0';
    wanted.resize(colon);
  }
  for (SimModelInfo m : Models()) {
    if (m.name != wanted) continue;
    if (subtype >= 0) {
      if (m.type_code != 4 && m.type_code != 6) return std::nullopt;
      m.subtype = subtype;
      m.name += ":" + std::to_string(subtype);
    }
    return m;
  }
  return std::nullopt;
}

std::vector<std::string> SimModelNames() {
  std::vector<std::string> names;
  for (const SimModelInfo& m : Models()) names.push_back(m.name);
  return names;
}

}  // namespace tavena
