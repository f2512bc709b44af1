// Reads a notebook for a capture, through the ports alone. Sends no set command.
#pragma once

#include <string>
#include <vector>

#include "support/capture/captured_notebook.h"
#include "support/capture/renaming.h"

namespace nuvelta::support {

// With `query` the modem is asked for its level once. Needs the installed platform, and a
// process in which no service runs.
CapturedNotebook ReadNotebookForCapture(bool query);

// The parts; each adds to the notebook what it sees.
void ReadSystem(CapturedNotebook& notebook);
void ReadRecords(CapturedNotebook& notebook);
void ReadHardware(CapturedNotebook& notebook);
void ReadModem(CapturedNotebook& notebook, bool query);
void ReadLogs(CapturedNotebook& notebook, int64_t now);

// Names of the account and the computer that stand nowhere in a capture but in its texts.
std::vector<FoundName> NamesOfTheSystem();

void NoteError(CapturedNotebook& notebook, const std::string& what, uint32_t error);

}  // namespace nuvelta::support
