#pragma once
// The carrier of objects between a drag source and a drop target, and on the
// clipboard: a list of elements and groups by name, or the class and type of
// an object to be made (the add bar), under the program's private format. A
// view that starts a drag puts its marker in, by which it knows its own data
// when it comes back. Names, never pointers: an object may be gone by the
// time the data is dropped. A connector belongs to one thread.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ioleConnector {
public:
    // The format's name, also the MIME type of the data.
    static constexpr const char* Format = "nevora works/qvrTessarine/private/ioleConnector";

    // Whether data announced under `format` is of the private format.
    static bool IsConnectorFormat(std::string_view format);
    // Reads data of the private format; nothing for another format or unreadable data.
    static std::optional<ioleConnector> Parse(std::string_view format, const std::string& data);
    // The data as it goes to the platform under Format.
    std::string Serialize() const;

    bool HasObjects() const { return !Elements.empty() || !Groups.empty(); }
    bool HasNewObject() const { return !NewClass.empty(); }

    // Who made the data; the project view writes its own marker here.
    std::string Marker;
    std::vector<std::string> Elements;
    std::vector<std::string> Groups;
    // An object to be made, by the factory's class and type.
    std::string NewClass;
    std::string NewType;
};
