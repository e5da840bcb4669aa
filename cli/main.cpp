// tavena: the service tool on the command line.
#include "Cli.h"

int main(int argc, char** argv) {
  return tavena::CliMain(argc, argv);
}
