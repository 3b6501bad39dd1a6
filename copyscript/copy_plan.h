// What running a loaded copy script would do, printed instead of done: for
// each line in file order, the line as expanded, whether its control lets
// it run, the sources it matches, the destination directories it finds and
// each file it would copy (with its bytes), make, write, rename, remove,
// chown (to which ids) and chmod. Nothing on disk changes: the lines work on
// a view of the tree (fileops/file_view.h) in which what an earlier line
// would make is there for the later ones and what it would remove is gone.
// Exist lines set their settings as a run would, so later controls see them.
//
// The plan follows the run's rules line for line: the same matching, the
// same exclusions, the same counts, the same fallbacks to a copy, the same
// stop at the first failing line when stop_on_fail is set. What it cannot
// know ahead is said where it matters: a source that is a link or not a
// regular file is planned as the failed, empty copy it is unless the link is
// one the run would follow, and a template an earlier line would write is
// planned without its size.
#pragma once

#include "copyscript/copy_run.h"
#include "copyscript/copy_script.h"

// What the run would end with.
struct copy_plan_result {
  int completed = 0;   // copy_script_run's result
  int files = 0;       // its *files_out
  unsigned bytes = 0;  // its *bytes_out
  copy_first_failure failure;
};

// Prints the plan of script (on the console), then the names it would
// change with what would stand there after ("new", "changed", "removed",
// their type, owner ids and mode). Fills *result (may be null). Returns
// result->completed; 0 for a null script.
int copy_script_plan(copy_script* script, int stop_on_fail, copy_plan_result* result);
