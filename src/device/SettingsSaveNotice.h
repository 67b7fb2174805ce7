#pragma once

namespace kx {

class Prompt;

// What every window tells the user about settings and profile values that could not be
// written (a full disk, a file that cannot be read): the values stay in effect for this run of
// the program and are written again at the next change or here.

// After a tool dialog has saved its settings: writes the kept values again and tells, once for
// each run of failures of the settings file and of the profile, where and why they are not
// saved.
void noticeUnsavedSettings(Prompt& prompt);

// When the program ends: writes the kept values a last time and tells of those that are lost,
// told before or not.
void noticeSettingsLostAtExit(Prompt& prompt);

} // namespace kx
