// The program's components, in one place so that their order is visible.
// Each waiting list grows at its head, so the definitions below run in the
// reverse of the start order within each list.

#include "app/EInitializer.h"
#include "batch/EBatchJob.h"
#include "foundation/EEnvironment.h"
#include "foundation/ELog.h"
#include "foundation/iDataBaseSection.h"
#include "foundation/qvrCRegKey.h"
#include "imaging/EImageStorage.h"
#include "model/iFactory.h"
#include "objects/imodMatrixEffectLibrary.h"
#include "output/qvrCAVIStream.h"

#include <functional>

namespace {

class EComponent : public EInitializer {
public:
    using InitStep = std::function<bool()>;
    using ExitStep = std::function<void()>;

    EComponent(EStringId nameId, EStringId dependencyId, InitStep init = {}, ExitStep exit = {},
               std::function<unsigned()> steps = {})
        : EInitializer(nameId, dependencyId), Init(std::move(init)), Exit(std::move(exit)),
          Steps(std::move(steps)) {}

    bool OnInit(EInitializerStatus&) override { return Init ? Init() : true; }
    void OnExit(EInitializerStatus&) override {
        if (Exit) Exit();
    }
    unsigned GetStepCount() override { return Steps ? Steps() : 1; }

private:
    InitStep Init;
    ExitStep Exit;
    std::function<unsigned()> Steps;
};

constexpr EStringId VitreaSaver = 40210;
constexpr EStringId OleDataFormats = 40203;
constexpr EStringId MatrixEffects = 40217;
constexpr EStringId ComponentLibrary = 40202;
constexpr EStringId ComponentData = 40209;
constexpr EStringId ProgramDatabase = 40214;
constexpr EStringId InterfaceImages = 40218;
constexpr EStringId GlobalData = 40204;
constexpr EStringId Environment = 40205;
constexpr EStringId Localization = 40206;
constexpr EStringId MessageBoxes = 40211;
constexpr EStringId GlobalLog = 40212;
constexpr EStringId ProxyConfiguration = 40208;
constexpr EStringId AviCompressors = 40216;
constexpr EStringId BatchProcessor = 40219;

// Components with a dependency, started in the order 13 to 17.
// The batch list goes at the end, once the preferences have kept it.
EComponent batchProcessor(BatchProcessor, GlobalLog, {}, [] { EBatchJobList::Get().DeleteAll(); });
EComponent aviCompressors(
    AviCompressors, GlobalLog,
    [] {
        qvrCAVIStream::Options::LoadCompressors();
        return true;
    },
    [] { qvrCAVIStream::Options::FreeCompressors(); });
// The proxy settings come with the program directory; at the end they are
// stored and the proxy directory is cleaned up as they ask.
EComponent proxyConfiguration(
    ProxyConfiguration, Environment,
    [] {
        EImageStorage::Get().LoadSettings();
        return true;
    },
    [] { EImageStorage::Get().OnExit(); });
EComponent globalLog(
    GlobalLog, Environment,
    [] {
        ELog::GlobalOpen();
        return true;
    },
    [] { ELog::GlobalClose(); });
// The message memory lives in the preferences' "Messages" section alone.
EComponent messageBoxes(MessageBoxes, GlobalData);

// Components without a dependency, started in the order 1 to 12.
EComponent localization(Localization, 0, {}, {}, [] { return static_cast<unsigned>(EStringTable::Count()); });
// The registry store lives in the program directory, so it opens once that is known.
EComponent environment(Environment, 0, [] {
    if (!EEnvironment::Get().Gather()) return false;
    qvrCRegKey::OpenStore(EEnvironment::Get().CurrentDir);
    return true;
});
EComponent globalData(GlobalData, 0);
EComponent interfaceImages(InterfaceImages, 0);
EComponent programDatabase(ProgramDatabase, 0, [] {
    iDataBaseSection::LinkWaitingSections();
    return true;
});
EComponent componentData(ComponentData, 0);
EComponent componentLibrary(
    ComponentLibrary, 0,
    [] {
        iFactoryProducerType::GlobalInit();
        return true;
    },
    [] { iFactoryProducerType::GlobalRem(); });
// The effects arrive with the preferences; at exit every loaded one goes.
EComponent matrixEffects(
    MatrixEffects, 0, {}, [] { imodMatrixEffectLibrary::Get().DeleteAll(); }, [] { return 0u; });
EComponent oleDataFormats(OleDataFormats, 0);
EComponent vitreaCalibrationFilter(VitreaSaver, 0);
EComponent vitreaMetricsFilter(VitreaSaver, 0);
EComponent vitreaOutputFilesFilter(VitreaSaver, 0);

} // namespace
