#include "Simserver.h"

namespace tavena {

int ServeOnPty(SimPrinter&, const SimServerOptions&, std::FILE*, std::FILE* log) {
  std::fprintf(log, "tavena-sim: pseudo-terminals exist only on Linux and other POSIX systems\n");
  return 1;
}

}  // namespace tavena
