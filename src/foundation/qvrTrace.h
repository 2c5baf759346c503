#pragma once
// The developers' debug channel. Lines go to standard error, and only when
// QVR_DEBUG is set; the verbose diagnostics need QVR_DEBUG=2. Nothing written
// here reaches the log file or the user. Safe to call from any thread.

#include <functional>
#include <string>

void qvrTrace(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Diagnostics that stay quiet unless QVR_DEBUG is 2 or more.
void qvrTraceVerbose(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Writes an already formed text to the channel.
void qvrTraceText(const std::string& text);

// Replaces where debug lines go (tests capture them); an empty sink restores
// standard error. The sink receives every line, whatever QVR_DEBUG says.
using qvrTraceSink = std::function<void(const std::string&)>;
void qvrSetTraceSink(qvrTraceSink sink);
