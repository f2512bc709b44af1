#include "support/capture/capture.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "support/capture/capture_scenario.h"
#include "support/capture/names.h"
#include "support/capture/own_folder.h"
#include "support/capture/read_notebook.h"
#include "support/capture/renaming.h"
#include "support/printable.h"

namespace nuvelta::support {

namespace {

struct Captured {
  CaptureFiles out;
  std::vector<NameReport> names;
};

// A name that stands in a word of the format itself cannot be told from it, and stays.
Captured MakeWithoutNames(const CapturedNotebook& notebook) {
  const std::vector<FoundName> names = FindNames(notebook, NamesOfTheSystem());
  std::vector<std::string> kept = DecisiveTexts(notebook);
  while (true) {
    const Renaming renaming(names, kept);
    CapturedNotebook renamed = notebook;
    Rename(renamed, renaming);
    Captured captured{.out = MakeCaptureFiles(renamed), .names = renaming.Report()};
    const size_t before = kept.size();
    for (const auto& [name, content] : captured.out.files) {
      for (const std::string_view bytes : {std::string_view(name), std::string_view(content)}) {
        const std::vector<std::string> found = renaming.SurvivorsIn(bytes);
        kept.insert(kept.end(), found.begin(), found.end());
      }
    }
    if (kept.size() == before) return captured;
  }
}

// "2 serial numbers (8, 10 characters)".
std::string CountOf(NameKind kind, const std::vector<size_t>& lengths) {
  std::string text = std::to_string(lengths.size()) + " " + NameOf(kind);
  text += lengths.size() == 1 ? " (" : "s (";
  for (size_t i = 0; i < lengths.size(); ++i) {
    if (i > 0) text += ", ";
    text += std::to_string(lengths[i]);
  }
  return text + " characters)";
}

std::string NamesText(const std::vector<NameReport>& names, NameFate fate, const char* title) {
  constexpr std::array kKinds{NameKind::kSerialNumber, NameKind::kAssetTag, NameKind::kUuid,
                              NameKind::kAccount, NameKind::kComputer};
  std::string text;
  for (const NameKind kind : kKinds) {
    std::vector<size_t> lengths;
    for (const NameReport& name : names) {
      if (name.kind == kind && name.fate == fate) lengths.push_back(name.length);
    }
    if (lengths.empty()) continue;
    text += std::string("  ") + title + CountOf(kind, lengths);
    if (fate == NameFate::kTooShort) text += ": too short to be told from other texts";
    if (fate == NameFate::kDecisive) text += ": part of a text that has to stay";
    text += "\n";
  }
  return text;
}

std::string ReportOf(const CaptureRequest& request, const CapturedNotebook& notebook,
                     const Captured& captured) {
  const auto logs = std::ranges::count_if(
      captured.out.files, [](const auto& file) { return file.first.starts_with("logs/"); });
  std::string text = "captured, " + notebook.time + ": " +
                     Printable(request.folder + "/" + kScenarioFile) + ", " + std::to_string(logs) +
                     (logs == 1 ? " log\n" : " logs\n");
  if (request.keep_names) text += "  kept      all names\n";
  text += NamesText(captured.names, NameFate::kReplaced, "renamed   ");
  text += NamesText(captured.names, NameFate::kTooShort, "kept      ");
  text += NamesText(captured.names, NameFate::kDecisive, "kept      ");
  for (const std::string& what : notebook.not_seen) text += "  not seen  " + Printable(what) + "\n";
  for (const std::string& what : captured.out.assumed) text += "  assumed   " + what + "\n";
  return text;
}

}  // namespace

int Capture(const CaptureRequest& request, const Print& print, const Print& complain) {
  if (const std::string problem = WhyNoCapture(request.folder); !problem.empty()) {
    complain(Printable(problem) + "\n");
    return kBadInput;
  }
  const CapturedNotebook notebook = ReadNotebookForCapture(request.query);
  const Captured captured = request.keep_names
                                ? Captured{.out = MakeCaptureFiles(notebook), .names = {}}
                                : MakeWithoutNames(notebook);
  const std::string problem = WriteCapture(request.folder, captured.out.files, kScenarioFile);
  if (!problem.empty()) {
    complain(Printable(problem) + "\n");
    return kNotWritten;
  }
  print(ReportOf(request, notebook, captured));
  return 0;
}

}  // namespace nuvelta::support
