// What a process of the system account gives up before it does anything.
// Facts: processthreadsapi.h, libloaderapi.h and winnt.h reference pages.
#pragma once

namespace nuvelta::windows {

// From here on libraries are looked for in the system folder only, none is loaded
// from the network or at low integrity, and junctions that were made by an
// unprivileged user are not followed. A system too old for one of these goes on
// without it.
void HardenProcess();

}  // namespace nuvelta::windows
