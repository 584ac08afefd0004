// reloading.h - what the plug-in of the host `reloading` does each time that it is loaded.
#pragma once

/// A plug-in's way to begin with the library, and to use it then. It tells how often something was
/// not as it should be, and says on standard error what.
using Beginning = int();

/// The names of its functions: in one process that loads the library anew for each.
const char* const beginnings[] = {
    "useWithoutStart",   // what needs none
    "endWithoutStart",   // what does, in processes of its own: stated messages
    "startTwice",        // by both names, then everything
    "cleanUpAlone",      // the destroy functions of what was never made
    "cleanUpThenStart",  // each has a flag of its own
};
