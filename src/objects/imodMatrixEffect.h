#pragma once
// A named kernel of the matrix effect library, with the list of the matrix
// filters that use it, and its exchange as a matrix effect file (.mfx): a
// database file with one section "Effect" that holds the kernel. A new kernel
// redraws every user; an effect that goes takes itself from its users, which
// are then left without an effect.
//
// Effects, their names and their user lists belong to the main thread. Renders
// read the kernel without a lock; a kernel is only changed from the main
// thread while no saver runs.

#include "objects/hMatrix.h"

#include <string>
#include <vector>

class hReport;
class imodMatrix;

class imodMatrixEffect {
public:
    imodMatrixEffect(std::string name, const hMatrix& matrix);
    // Every user is left without an effect.
    ~imodMatrixEffect();
    imodMatrixEffect(const imodMatrixEffect&) = delete;
    imodMatrixEffect& operator=(const imodMatrixEffect&) = delete;

    const std::string& GetName() const { return Name; }
    const hMatrix& GetMatrix() const { return Matrix; }
    // Replaces the kernel and redraws every user.
    void SetMatrix(const hMatrix& matrix);
    const std::vector<imodMatrix*>& GetUsers() const { return Users; }

    // Reads the kernel from the section "Effect", or else "Effect "<name>"",
    // of a matrix effect file; false, with the reasons reported, leaves the
    // kernel as it was.
    bool LoadFile(const std::string& path, hReport& report);
    // Writes the kernel as a matrix effect file; false, with the reason reported, when it can't.
    bool SaveFile(const std::string& path, hReport& report) const;

private:
    friend class imodMatrix;
    friend class imodMatrixEffectLibrary;

    void AddUser(imodMatrix* user);
    void RemoveUser(imodMatrix* user);
    // The library renames; the users' descriptions change with it.
    void SetName(std::string name);

    std::string Name;
    hMatrix Matrix;
    std::vector<imodMatrix*> Users;
};
