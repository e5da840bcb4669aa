// The simulator's command line: tavena-sim and "tavena sim" both run it.
#pragma once

namespace tavena {

// Parses the options, serves a simulated printer on a pseudo-terminal until
// SIGINT or SIGTERM (or until the simulated line closes). Returns the exit
// code: 0 after a normal stop, 1 when the terminal cannot be served, 2 for
// bad options. argv[0] is the program name.
int SimMain(int argc, char** argv);

}  // namespace tavena
