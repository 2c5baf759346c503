#pragma once
// The last line of defence: runs the program's loop inside a frame that
// catches every exception and fatal signal, and offers to save the project to
// "---crashed-project---.tsp" before the process ends. Its questions go through
// the user-interface hook, so a headless run takes the default answers (save,
// then give up after a failure) and never waits.

#include <functional>
#include <string>

class CCrashCatcher {
public:
    // Runs `loop`; an exception or fatal signal that reaches the top leads to
    // the crash save. Returns the loop's result, or 1 after a crash.
    static int Run(const std::function<int()>& loop);
    // Asks whether to save, then saves the standard project, with retries.
    static void OfferCrashSave();
    // The file the crash save proposes, in the program directory.
    static std::string ProposedPath();
    // What the front end does before the question, such as hiding its main
    // window; null for nothing.
    static void SetBeforeQuestion(std::function<void()> hook);
};
