// What this program prints, and whether all of it got to where it was to go.
#pragma once

namespace nuvelta::wine_notebook {

// Gives standard streams that are closed a place that takes nothing: or a file of
// ours would be opened as one of them, and be printed into.
void KeepStandardStreams();

// Whether all that was printed on the standard output by now could be written.
bool AllPrinted();

}  // namespace nuvelta::wine_notebook
