#pragma once
// "Render later..." of the render setup dialog: the saver's pages are checked
// as when the dialog would render, and then the job-add dialog enters the
// saver as a batch job. Main thread only.

#include <functional>
#include <string>

class EBatchJobAddDialog;
class iSaver;

namespace ERenderLater {
enum class Outcome {
    ChecksFailed, // a page refused its values; the complaint was shown
    Cancelled,    // the job-add dialog was cancelled: the setup dialog stays open
    Entered       // the job was made or renewed: the setup dialog closes as on Cancel
};

// Shows the opened job-add dialog; true when it ended with OK.
using ShowDialog = std::function<bool(EBatchJobAddDialog& dialog)>;

// `projectPath` is the path of the project that holds the saver, empty when it has never been saved.
Outcome Run(iSaver& saver, const std::string& projectPath, const ShowDialog& show);
} // namespace ERenderLater
