// tav_ini_demo.cpp - loads a configuration file, changes a value, saves it atomically and
// prints what is on disk afterwards.
//
// Usage: tav_ini_demo FILE

#include <cstdio>
#include <fstream>
#include <iostream>

#include "tav_filename.h"
#include "tav_ini.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: tav_ini_demo FILE\n");
    return 2;
  }
  TavClIniFileSave settings{TavClFilename(argv[1])};
  if (!settings.load(true)) {
    std::fprintf(stderr, "cannot read %s\n", argv[1]);
    return 1;
  }

  const char* text = nullptr;
  const char* comment = nullptr;
  int port = 0;
  bool verbose = false;
  settings.getSection("server");
  settings.getOption("host", text);
  settings.getOption("port", port, comment);
  std::printf("server: host %s, port %d (%s)\n", text, port, comment);
  settings.getOption("greeting", text);
  std::printf("greeting (quoted, keeps its ';'): %s\n", text);
  settings.getOption("logdir", text);
  std::printf("logdir ($(HOME) expanded): %s\n", text);
  settings.getSection("client");
  settings.getOptionBool("verbose", verbose);
  std::printf("client: verbose %s\n", verbose ? "on" : "off");

  settings.setNewValue("server", "port", "9090");
  settings.addOption("client", "motto", " spaced; \"quoted\" ");
  if (!settings.saveAtomic()) {
    std::fprintf(stderr, "cannot save %s\n", argv[1]);
    return 1;
  }
  std::printf("\nport set to 9090, a motto added; %s now reads:\n", argv[1]);
  std::ifstream saved(argv[1], std::ios::binary);
  std::cout << saved.rdbuf();
  return 0;
}
