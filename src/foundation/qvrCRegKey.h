#pragma once
// Keyed settings of the application: the proxy engine's settings, the dialogs'
// last entries and the like, under key paths such as "Engines\ProxyManager".
// All keys live in one store, the file "Registry.tsp" in the program
// directory: the tree data format in the database envelope, one block per
// segment of a key path, a value as a key of its block. The store is read by
// OpenStore and written whenever a value changes, through a temporary file and
// a rename, so a crash never leaves half a file. Until OpenStore names a
// directory the store lives in memory only.
//
// Within one key a name is either a value or a sub-key, never both; names
// compare without regard to case. The store is safe from several threads (one
// lock around it); a key object is a small handle that belongs to one thread.
// Failures come back as results: a get gives its default, a set gives false.

#include <string>
#include <string_view>

class qvrCRegKey {
public:
    static constexpr const char* StoreFileName = "Registry.tsp";
    enum class Access { OpenExisting, Create };

    // Points the store at "Registry.tsp" in `directory` and reads it; a missing
    // file is an empty store. False, with an empty store, when the file is unreadable.
    static bool OpenStore(const std::string& directory);
    // The store's file; empty while the store lives in memory only.
    static std::string GetStorePath();

    // The application's root key. A machine name ("\\name") is accepted, and the
    // local store stands for the remote one.
    static qvrCRegKey Root(std::string_view machine = {});

    qvrCRegKey() = default; // a closed key: gets give defaults, sets fail
    // Opens `name` below `parent`; the name may hold several segments split by
    // backslashes. With Access::Create missing keys are made.
    bool Open(const qvrCRegKey& parent, std::string_view name, Access access = Access::Create);
    void Close();
    bool IsOpen() const { return Opened; }
    // The key's path below the application's root, segments joined by backslashes.
    const std::string& GetPath() const { return Path; }

    std::string GetText(std::string_view name, std::string_view defaultValue) const;
    long GetLong(std::string_view name, long defaultValue) const;
    bool GetBool(std::string_view name, bool defaultValue) const;

    // Sets a value and writes the store; false when the key is closed, the name
    // is a sub-key, or the file could not be written (the value then stays in memory).
    bool SetText(std::string_view name, const std::string& value);
    bool SetLong(std::string_view name, long value);
    bool SetBool(std::string_view name, bool value);

    bool DeleteValue(std::string_view name);
    // Deletes the sub-key `name` (one or more segments) with everything below it.
    bool DeleteSubTree(std::string_view name);

private:
    bool readValue(std::string_view name, std::string& text) const;
    bool writeValue(std::string_view name, const std::string& text);

    std::string Path;
    bool Opened = false;
};
