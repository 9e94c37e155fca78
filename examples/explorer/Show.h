// How the form is brought before the user: each system has its own way.
#pragma once

#include <string>

#include "ExplorerForm.h"

struct TShowOptions {
  bool Tour = false;       ///< Drive the form and print what it shows.
  std::string Screenshot;  ///< File for a picture of the window; empty for none.
  int Density = 0;         ///< Pixels per inch for tour and picture; 0: those of the monitor.
  std::string Style;       ///< Name of the style; empty for the system's.
};

/// Runs until the user closes the form or the tour is over. The program's exit code.
int ShowForm(TExplorerForm& form, const TShowOptions& options);
