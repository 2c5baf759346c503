#pragma once
// The execution dialog of a projector array saver, apart from the window: the
// standard saver's dialog with the array's texts, lines about projectors
// instead of threads, and the list of projector states, which follows the
// run's projector messages. Its hard abort asks first and warns afterwards.
//
// Threads: as ESaverExecution; everything here belongs to the window thread.

#include "foundation/EStringTable.h"
#include "output/ESaverExecution.h"
#include "projector/LVitrea.h"
#include "projector/isvrVitreaWorkData.h"

#include <array>
#include <string>

class isvrVitrea;

class EVitreaExecution : public ESaverExecution {
public:
    // The title of the projector list (65055) and its rows' heads (65056).
    static constexpr EStringId text_status_title = 65055;
    static constexpr EStringId text_status_row = 65056;
    static const Kind VitreaKind;

    EVitreaExecution(isvrVitrea& saver, const iSaverSetup& setup, View& view);

    // The head of a projector's row: its number and its output.
    std::string GetRowHead(std::size_t projector) const;
    // The state of a projector's row: "<inactive>", "Waiting...", frames rendered so far, or the outcome.
    const std::string& GetRowStatus(std::size_t projector) const { return RowStatus[projector]; }
    // The projector's state as the row last showed it.
    isvrVitreaWorkData::ProjectorState GetRowState(std::size_t projector) const {
        return RowState[projector];
    }

    // While threads run, asks whether to end them by force; on yes ends them,
    // closes the dialog and tells the user to save the project.
    void HardAbort() override;

protected:
    void onRunMessage(unsigned message) override;

private:
    void updateRows();
    static std::string rowStatus(isvrVitreaWorkData::ProjectorState state, std::uint32_t done,
                                 std::uint32_t frames);

    isvrVitrea& Saver;
    std::array<std::string, LVitrea::ProjectorCount> RowStatus;
    std::array<isvrVitreaWorkData::ProjectorState, LVitrea::ProjectorCount> RowState{};
};
