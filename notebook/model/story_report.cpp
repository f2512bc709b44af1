#include "notebook/model/story_report.h"

namespace nuvelta::virtual_notebook {

bool StoryReport::Behaved() const {
  if (!deadlock.empty()) return false;
  for (const ProcessEnd& process : processes) {
    if (process.how == ProcessEnd::How::kCrashed) return false;
  }
  return true;
}

}  // namespace nuvelta::virtual_notebook
