#include "projector/EVitreaExecution.h"

#include "foundation/EStringTable.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/qvrString.h"
#include "projector/isvrVitrea.h"

const ESaverExecution::Kind EVitreaExecution::VitreaKind{"isvrVitrea", "Dialogs\\Renderer\\Vitrea",
                                                         "Projector"};

EVitreaExecution::EVitreaExecution(isvrVitrea& saver, const iSaverSetup& setup, View& view)
    : ESaverExecution(
          VitreaKind,
          [&saver](std::shared_ptr<isvrSaverRunWindow> window) {
              return isvrVitreaWorkData::Create(saver, std::move(window));
          },
          setup, view),
      Saver(saver) {
    const auto& active = saver.GetConfiguration().OutputFiles.ProjectorActive;
    for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector) {
        RowState[projector] =
            active[projector] ? isvrVitreaWorkData::StateWaiting : isvrVitreaWorkData::StateOff;
        RowStatus[projector] = rowStatus(RowState[projector], 0, 0);
    }
}

std::string EVitreaExecution::GetRowHead(std::size_t projector) const {
    return qvrFormatMessage(
        EStringTable::Get(text_status_row),
        {static_cast<long>(projector) + 1, Saver.GetConfiguration().OutputFiles.GetOutputName(projector)});
}

void EVitreaExecution::onRunMessage(unsigned message) {
    if (message == isvrSaverRunWindow::MessageProjector) updateRows();
}

void EVitreaExecution::updateRows() {
    auto* run = static_cast<isvrVitreaWorkData*>(getRun());
    if (!run) return;
    for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector) {
        std::uint32_t done = 0;
        RowState[projector] = run->GetProjectorState(projector, done);
        RowStatus[projector] = rowStatus(RowState[projector], done, run->GetFramesPerProjector());
    }
    getView().Changed();
}

std::string EVitreaExecution::rowStatus(isvrVitreaWorkData::ProjectorState state, std::uint32_t done,
                                        std::uint32_t framesPerProjector) {
    const long frames = static_cast<long>(framesPerProjector);
    const long rendered = static_cast<long>(done);
    switch (state) {
    case isvrVitreaWorkData::StateOff:
        return "<inactive>";
    case isvrVitreaWorkData::StateWaiting:
        return "Waiting...";
    case isvrVitreaWorkData::StateWorking:
        return qvrFormat("%ld/%ld frames rendered.", rendered, frames);
    case isvrVitreaWorkData::StateFinished:
        break;
    }
    if (rendered == frames) return qvrFormat("%ld frames rendered.", rendered);
    if (rendered == 0) return "NO frame rendered.";
    return qvrFormat("Only %ld/%ld frames rendered.", rendered, frames);
}

void EVitreaExecution::HardAbort() {
    if (GetState() == StateOver) {
        ESaverExecution::HardAbort();
        return;
    }
    if (hMessageBox::Show(
            "THIS IS THE HARD-ABORT FUNCTION !!\nUse it only if you cannot stop the threads for any "
            "reason !!\nYou should save all data after you used this function.\nAre you sure that "
            "you want to hard-abort the threads ?",
            hMessageBox::YesNo | hMessageBox::IconExclamation, "") != IDYES)
        return;
    ESaverExecution::HardAbort();
    hMessageBox::Show("THREADS HAVE BEEN ABORTED HARD - SAVE YOUR PROJECT NOW !",
                      hMessageBox::OK | hMessageBox::IconStop, "");
}
