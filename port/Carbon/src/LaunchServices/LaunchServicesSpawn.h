// Starting a program that belongs to nobody: it runs in a session of its own, outlives its
// launcher, and is never its launcher's child to wait for.
#pragma once

#include <MacTypes.h>

#include <span>
#include <string>

namespace carbon::ls {

// Runs the program at the absolute path inProgram, with inArguments after argv[0], the
// caller's environment, standard input from /dev/null, standard output and error to the
// user's journal (else /dev/null), no other descriptor, default signal handling and "/" as
// its folder.
// noErr once it has been executed; the status of exec's failure otherwise.
OSStatus SpawnDetached(const std::string& inProgram, std::span<const std::string> inArguments);

// The Launch Services status of an errno from starting a program.
OSStatus StatusOfSpawnErrno(int inErrno);

}  // namespace carbon::ls
