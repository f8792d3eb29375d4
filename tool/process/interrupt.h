#ifndef TOOL_PROCESS_INTERRUPT_H
#define TOOL_PROCESS_INTERRUPT_H

namespace tool {

// From here on SIGINT and SIGTERM do not end the process but are remembered, so that the work in
// hand can be finished and made permanent. A second one ends the process at once.
void WatchInterrupts();

// The signal that came since WatchInterrupts, 0 for none.
int Interrupted();

}  // namespace tool

#endif
