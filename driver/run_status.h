// What a run ended with, kept for the exit status that "-status" asks for
// (driver/options.h) and for the one console line that then says why.
// Without "-status" the run still keeps it, and exits 0.
#pragma once

// Exit statuses under "-status".
inline constexpr int kExitDone = 0;     // the action's copy script ran to success, or Exit
inline constexpr int kExitUsage = 1;    // an option without its argument (also without -status)
inline constexpr int kExitFailed = 2;   // the chosen action failed
inline constexpr int kExitQuit = 3;     // the operator quit, or input ended before a choice
inline constexpr int kExitStartup = 4;  // settings, init file or answers not loadable

// Records the outcome, replacing the one recorded before: status and why,
// formatted (at most 999 characters; with err not 0, ", " and the
// system's text for it follow, as in every error line).
void run_status_set(int status, int err, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
// Records kExitDone without a reason.
void run_status_done();
// The recorded status (kExitDone until something else is recorded) and
// why ("" for kExitDone).
int run_status();
const char* run_status_reason();
