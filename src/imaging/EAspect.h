#pragma once
// The pixel aspect ratios offered to sources and savers: "normal", "PAL",
// "NTSC" and "HDTV". Each is a static object that links itself into one list
// as it is made, so the list starts with the one made last. The list is built
// during static construction and read-only afterwards: safe from any thread.

#include <string>

class EAspect {
public:
    // Links the new ratio in front of the list; only for objects that live
    // until the program ends.
    EAspect(double aspectValue, std::string aspectName);
    EAspect(const EAspect&) = delete;
    EAspect& operator=(const EAspect&) = delete;

    // The width of a pixel against its height.
    double GetValue() const { return value; }
    const std::string& GetName() const { return name; }
    const EAspect* GetNext() const { return next; }

    static const EAspect* GetFirst() { return first; }
    static long GetCount() { return count; }

private:
    double value;
    std::string name;
    const EAspect* next;

    static const EAspect* first;
    static long count;
};
