// The collecting child: the process that loads the plug-in and runs its callbacks.
#pragma once

namespace qvhost {

// The hidden sub-command by which the parent starts its child: SETTINGS LIFELINE, both descriptors.
inline constexpr const char* kChildCommand = "collecting-child";

// What the parent writes into the lifelines of several lanes when it has started all that it could: a lane asks its
// own modules; or those behind them as well, since there was no process for the next lane.
inline constexpr char kOwnModules = 'o';
inline constexpr char kModulesBehindToo = 'b';

// What it writes into the lifeline of the first lane when all others have ended. The second one: and the BMC did not
// answer them any more.
inline constexpr char kLanesEnded = 'e';
inline constexpr char kLanesEndedDeviceLeft = 'l';

// Collects into the options' log directory, every step noted in its lane's journal. Of several lanes each begins when
// it is told which modules it asks, and the first one asks the host's own questions when it is told that the others have
// ended. `settings` is a file that stands at its beginning and holds what settings_of() wrote. `lifeline` is the reading
// end of a pipe whose other end the parent holds: when it closes, the parent is gone and the child ends with all tools
// it started. Returns the exit status.
int run_child(int settings, int lifeline);

}  // namespace qvhost
