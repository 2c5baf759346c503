#include "objects/imodMatrixEffect.h"

#include "foundation/EStringTable.h"
#include "foundation/hReport.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrCException.h"
#include "foundation/qvrCTextFile.h"
#include "foundation/qvrString.h"
#include "objects/imodMatrix.h"

#include <algorithm>

namespace {

enum : EStringId {
    textMatrixIncomplete = 47620,
    textFileKind = 47624,
    textCannotWrite = 47626,
};

constexpr const char* sectionName = "Effect";

} // namespace

imodMatrixEffect::imodMatrixEffect(std::string name, const hMatrix& matrix)
    : Name(std::move(name)), Matrix(matrix) {}

imodMatrixEffect::~imodMatrixEffect() {
    const std::vector<imodMatrix*> users = std::move(Users);
    for (imodMatrix* user : users)
        user->OnEffectGone();
}

void imodMatrixEffect::SetMatrix(const hMatrix& matrix) {
    Matrix = matrix;
    for (imodMatrix* user : Users)
        user->OnEffectChanged();
}

void imodMatrixEffect::SetName(std::string name) {
    Name = std::move(name);
    for (imodMatrix* user : Users)
        user->NotifyModified(nullptr, true);
}

void imodMatrixEffect::AddUser(imodMatrix* user) {
    Users.push_back(user);
}

void imodMatrixEffect::RemoveUser(imodMatrix* user) {
    Users.erase(std::remove(Users.begin(), Users.end(), user), Users.end());
}

bool imodMatrixEffect::LoadFile(const std::string& path, hReport& report) {
    hReport context(&report, EStringTable::Load(textFileKind));
    iDataBase file;
    if (!file.Load(path, 0, DBFlagCheckOnly, &context)) return false;
    const qvrCTreeData* section = file.Find(sectionName);
    if (!section) section = file.Find(qvrFormat("%s \"%s\"", sectionName, Name.c_str()));
    if (!section) {
        context.Report(textMatrixIncomplete, hReportError);
        return false;
    }
    hMatrix read;
    if (!read.Load(*section, context)) return false;
    SetMatrix(read);
    return true;
}

bool imodMatrixEffect::SaveFile(const std::string& path, hReport& report) const {
    hReport context(&report, EStringTable::Load(textFileKind));
    qvrCTreeData root(iDataBase::RootName, iDataBase::CurrentVersion);
    Matrix.Save(*root.CreateChild(sectionName));
    try {
        qvrCDiskTextFile file(path, qvrCDiskTextFile::Mode::Write);
        file.WriteText(iDataBase::Header);
        root.Save(file, "   ", nullptr);
        file.WriteText(iDataBase::Trailer);
        file.Close();
    } catch (const std::exception& error) {
        context.Report(
            qvrFormatMessage(EStringTable::Get(textCannotWrite), {path, qvrErrorText::FromException(error)}),
            hReportFailure);
        return false;
    }
    return true;
}
