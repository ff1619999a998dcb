// tav_console_demo - a command-line tool built on the console object: its arguments are checked
// against the usage string, "-h" shows usage and help, and every fault ends it with a code.
//
// Try: tav_console_demo -h
//      tav_console_demo -o out.txt -i a.txt b.txt -level 3 name1 name2
//      tav_console_demo -o out.txt -x        (an unknown switch: exit code 201)
//      tav_console_demo a b                  (no -o: exit code 201 after the usage)

#include <algorithm>
#include <cstdio>
#include <vector>

#include "tav_console.h"

namespace {

// The usage line is also the grammar: "(-o <output>)" takes a value, "(-i <input> ...)" a list
// of them, "[...]" is optional, the "!" line is tagged (hidden here, but still accepted), and
// "<name> ..." allows free arguments.
const char kUsage[] =
    "(-o <output>) [(-i <input> ...)] [(-level <number>)] [-v]\n"
    "![-trace]\n"
    "<name> ...";

const char kHelp[] =
    "-o <output>        the file to write (required)\n"
    "-i <input> ...     files to read, one or more\n"
    "-level <number>    how much to do, 0 to 9\n"
    "-v                 tell what happens\n"
    "<name> ...         names to work on";

}  // namespace

int main(int argc, char** argv) {
  TavClConsoleUI console(argc, argv, "Console demo", "argument checking", "2026 TAV authors");
  console.hideTaggedLines();
  console.handleUsageHelp(kUsage, kHelp);

  const char* output = nullptr;
  console.reqArgString('o', output);
  int level = 1;
  console.hasArgNumval("level", level);
  const bool verbose = console.hasArgSwitch('v');
  std::printf("output: %s, level %d%s%s\n", output, level, verbose ? ", verbose" : "",
              console.hasArgSwitch("trace") ? ", tracing" : "");

  // The values of -i: the argument after it, and those after that up to the next switch.
  std::vector<const char*> inputs;
  TavClArgvCursor input(console);
  if (input.positionTo("i")) {
    while (input.setToNext() && !input.isSwitch()) inputs.push_back(input.getAsCString());
  }
  for (const char* file : inputs) std::printf("input: %s\n", file);
  // The free arguments are those that are neither switches nor the value right after a switch;
  // the later values of the -i list are free too, so they are left out here.
  TavClArgvFreeCursor name(console);
  for (bool more = name.setToFirst(); more; more = name.setToNext()) {
    if (std::find(inputs.begin(), inputs.end(), name.getAsCString()) == inputs.end()) {
      std::printf("name: %s\n", name.getAsCString());
    }
  }
  return 0;
}
