#pragma once
// Copies and deletions of many files at once, with a title on the status line
// while they run, the way a desktop shell offers them. A source entry is
// either one file's path or a directory with a shell-style wildcard for the
// names ("/data/proxies/*.*"); with recursion the wildcard also applies in
// every directory below. Wildcards are matched without regard to case.
//
// Failures come back as results: an operation goes on past a file it can't
// handle and answers false at the end. Safe from any thread as long as no two
// operations work on the same files; the confirmation question goes through
// the user-interface hook and so belongs to the main thread.

#include <string>
#include <vector>

class EFileOperation {
public:
    enum class Recursion { TopOnly, Recursive };
    enum class Confirmation { None, Ask };

    // Deletes every file that the entries name. With Confirmation::Ask the user
    // is asked first, and a "no" deletes nothing and answers false.
    static bool Delete(const std::vector<std::string>& sources, Recursion recursion, const std::string& title,
                       Confirmation confirmation);
    // Copies every file that the entries name into `target`, keeping the
    // directories below each entry's own directory; existing files are replaced.
    static bool Copy(const std::vector<std::string>& sources, const std::string& target, Recursion recursion,
                     const std::string& title);
    // Removes the empty directories below `directory` (not the directory itself).
    static void RemoveEmptyDirectories(const std::string& directory);
};
