// tavena-sim: a simulated TAVENA printer on a pseudo-terminal.
#include "Simmain.h"

int main(int argc, char** argv) {
  return tavena::SimMain(argc, argv);
}
