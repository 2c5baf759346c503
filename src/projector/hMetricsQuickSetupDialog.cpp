#include "projector/hMetricsQuickSetupDialog.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"

bool hMetricsQuickSetupDialog::Accept() {
    const LMetricsQuickSetup::Fault fault = Values.Check();
    if (fault != LMetricsQuickSetup::Fault::None) {
        const int answer = hMessageBox::Show(LMetricsQuickSetup::FaultQuestion(fault),
                                             hMessageBox::YesNo | hMessageBox::IconQuestion, "");
        if (answer == IDYES) Values.Fix(fault);
        Focus = fault == LMetricsQuickSetup::Fault::RowLeftOfColumn ? Field::vx : Field::hy;
        return false;
    }
    Windows = Values.Layout();
    Values.Save();
    return true;
}
