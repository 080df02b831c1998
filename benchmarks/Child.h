#pragma once

#include <string>
#include <vector>

/// Programs of their own: their memory is nobody else's.
namespace korvo::bench {

using Words = std::vector<std::string>;

/// Runs a program with its standard output in a file and waits for it; ends this one when it fails.
void run(const Words& words, const std::string& output);

/// The same, watched.
/// @return  Its peak resident memory, MB, as often as it can be asked for while it runs. (What the
///          system says afterwards counts the pages of the process that started it.)
double peakOf(const Words& words, const std::string& output);

/// Peak resident memory of this process, MB, since it was executed.
double ownPeak();

}  // namespace korvo::bench
