// What is said when the work is done.
#pragma once

#include <string>
#include <vector>

#include "BackupTask.h"

namespace backup {

struct Step {
  std::string title;
  BackupTask::Kind kind;
  Ref<StepResult> result;  ///< Nil until it has been done.
};

/// A table with a line for each step that was begun.
void printSteps(const std::vector<Step>& steps);

/// The largest files, the largest first: their names, with as much of their folders as tells files
/// of one name apart.
void printLargest(qz::NSArray* files);

}  // namespace backup
