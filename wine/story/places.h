// Where things lie in a Wine prefix that plays stories, and the notes in the
// journal that have a meaning beyond their text.
#pragma once

namespace nuvelta::wine {

// The folder that holds the files below, on drive C:.
inline constexpr const char* kInstallFolder = "Program Files\\Nuvelta Wireless";
inline constexpr const char* kServiceFile = "hx2208_auth_service.exe";
inline constexpr const char* kHardwareFile = "iphlpapi.dll";
inline constexpr const char* kDriverFile = "service_driver.exe";
// On drive C:, too: the virtual hardware as the home of the classes that Wine lacks, for a
// service that plays no story. Under its own name Wine would load its library.
inline constexpr const char* kClassesFile = "hx2208_classes.dll";
inline constexpr const char* kSupportFile = "hx2208_support.exe";
// Its arguments, a zero byte behind each: in a command line Wine mangles what is not ASCII,
// depending on the locale. And what it has printed.
inline constexpr const char* kSupportArguments = "support.arguments";
inline constexpr const char* kSupportOutput = "support.out";
inline constexpr const char* kSupportErrors = "support.err";
// One line: the Windows path of the scenario that is being played.
inline constexpr const char* kStoryFile = "story.path";
inline constexpr const char* kJournalFile = "journal.jsonl";
// While it is there, the answer about network adapters makes the service fault: the first
// process in the way that the first line names, the second in that of the second and so
// on. "Hang" means that a call of the fault's handling never returns.
inline constexpr const char* kCrashRequestFile = "crash.request";
inline constexpr const char* kCrash = "crash";
inline constexpr const char* kCrashByOverflow = "crash-by-overflow";  // of the stack
inline constexpr const char* kHangInMessage = "hang-in-message";      // FatalAppExitW
inline constexpr const char* kHangInDump = "hang-in-dump";            // MiniDumpWriteDump
// What the driver has to take back; there while it works.
inline constexpr const char* kUndoFile = "undo.json";

// Below the folder in the variable "programdata": the service's log files.
inline constexpr const char* kLogFolder = "Nuvelta Wireless Inc\\MAService\\HX2208GW";

// The process whose end is journaled next crashed: the note goes on with how.
inline constexpr const char* kCrashNote = "crashed: ";
// The service or the story was stuck and was ended: the note goes on with where.
inline constexpr const char* kStuckNote = "stuck: ";

}  // namespace nuvelta::wine
