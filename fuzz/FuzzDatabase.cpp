// The database files of the system: a project opened as the desktop program
// opens it, the preference databases, and the registry file read at start.
// QVR_FUZZ_DATABASE says which.
#include "FuzzSupport.h"

#include "app/CTessarineApp.h"
#include "foundation/hReport.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrCRegKey.h"
#include "model/iProject.h"
#include "projector/LMetricsQuickSetup.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

constexpr std::string_view Kind = QVR_FUZZ_DATABASE;

void readDatabase(const std::uint8_t* data, std::size_t size) {
    const std::string path = qvrFuzz::WriteInput(data, size, "input.tsp");
    hReportRoot report("Loading");
    if (Kind == "project") {
        qvrFuzz::StartSystem().GetDocument().OnOpenDocument(path, &report);
        iProject::GetStandard().Clear();
        return;
    }
    iDataBase database;
    database.Load(path, DBMaskGlobalPrefs | DBMaskUserPrefs, 0, &report);
}

void readRegistry(const std::uint8_t* data, std::size_t size) {
    const std::string directory = qvrFuzz::ScratchDirectory() + "/registry";
    qvrFuzz::WriteInput(data, size, "registry/" + std::string(qvrCRegKey::StoreFileName));
    qvrCRegKey::OpenStore(directory);
    LMetricsQuickSetup::Load().Layout();
    qvrCRegKey key;
    key.Open(qvrCRegKey::Root(), "Engines\\ProxyManager", qvrCRegKey::Access::OpenExisting);
    key.GetText("Directory", "");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    qvrFuzz::StartSystem();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (Kind == "registry")
        readRegistry(data, size);
    else
        readDatabase(data, size);
    return 0;
}
