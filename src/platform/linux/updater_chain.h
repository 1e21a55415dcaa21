#pragma once

#include <sys/types.h>

// The updaters of one run restart each other and end at once; a shell or a script would take the
// end of the first for the end of the run. The first one therefore leaves a parent behind that
// waits for the whole chain and ends with the exit code of its last member.
//
// Every member of the chain holds the write end of one pipe, whose number is handed on in an
// environment variable; a member that starts the next one writes its process id into the pipe. The
// end of the file on the pipe is the end of the chain: it comes when the last member has ended,
// however it ended.
namespace platform {

// The variable that names the pipe's descriptor to the next member, and that descriptor.
inline constexpr const char* kChainVariable = "TMW_UPDATER_CHAIN";
inline constexpr int kChainDescriptor = 3;

// This process's write end of the pipe, closed on exec; -1 when it belongs to no chain. The first
// call takes over what the starter handed on and removes the variable from the environment.
int ChainPipe();

// Reports to the waiting parent that this process started the chain's next member.
void AnnounceChainMember(pid_t member);

}  // namespace platform
