#include "Simserver.h"

#include <cstdio>

#include "sequence/Clock.h"

namespace tavena {

std::string SimLogStamp() {
  const LocalTime t = CurrentClock().Local();
  char text[32];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d ", t.hour, t.minute, t.second,
                t.millisecond);
  return text;
}

}  // namespace tavena
