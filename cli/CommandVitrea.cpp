// qvr vitrea metrics|outputs|export: writes the metric and the output
// definition file of a projector array saver from the few numbers and
// patterns of the quick setup, or the three definition files of a saver in a
// project.

#include "QvrCommand.h"
#include "QvrSaverLookup.h"
#include "QvrSession.h"

#include "foundation/EStringTable.h"
#include "foundation/hReport.h"
#include "foundation/qvrString.h"
#include "output/EImageOutputStream.h"
#include "projector/LMetrics.h"
#include "projector/LMetricsQuickSetup.h"
#include "projector/LOutputFiles.h"
#include "projector/hOutputFilesGenerateDialog.h"
#include "projector/isvrVitrea.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>

namespace {

constexpr const char* Help =
    "usage: qvr vitrea metrics OUT.vtmt [--dx N] [--dy N] [--hx N] [--hy N] [--vx N]\n"
    "                          [--vy N] [--w N] [--h N] [--resolution X,Y] [--fix]\n"
    "       qvr vitrea outputs OUT.vtfl --file PATTERN [--dir PATTERN] [--format NAME]\n"
    "                          [--setup TEXT] [--off N[,N...]]\n"
    "       qvr vitrea export PROJECT [--saver NAME] [--calibration FILE.vtcl]\n"
    "                          [--metrics FILE.vtmt] [--outputs FILE.vtfl]\n\n"
    "metrics  lays out the 18 windows of the projector array, 5 in a column and 13\n"
    "         in a row, as the metric quick setup does, and writes them as a metric\n"
    "         file. --w and --h are a window's size, --dy and --dx the gaps in the\n"
    "         column and in the row, --hx the column's left edge, --vx the row's left\n"
    "         edge, --hy and --vy place the row below the column. Numbers not given\n"
    "         are those last used in the quick setup dialog. --resolution is in\n"
    "         pixels per unit (default 1,1). --fix mends a row that would overlap\n"
    "         the column, as the dialog offers to.\n"
    "outputs  writes an output definition file for the format NAME (default: the\n"
    "         default output stream) with its setup TEXT (default: the format's\n"
    "         defaults). In the patterns \"<P>\" stands for the projector's number,\n"
    "         01 to 18, and \"<F>\" for the frame, which sequences need. --off\n"
    "         switches projectors off, numbered from 1.\n"
    "export   writes the calibration, metric and output definition files of a\n"
    "         projector array saver in PROJECT as its setup pages save them; without\n"
    "         --saver the project must hold exactly one such saver.\n\n"
    "The profile is read, never written. Exit 2 for bad numbers, patterns or\n"
    "formats, 1 when the file can't be written.\n";

int usage(const std::string& problem) {
    std::fprintf(stderr, "qvr vitrea: %s\n\n%s", problem.c_str(), Help);
    return ExitUsage;
}

int refuse(const std::string& file, const std::string& problem) {
    std::fprintf(stderr, "qvr vitrea: %s: %s\n", file.c_str(), problem.c_str());
    return ExitUsage;
}

int writeFailed(const std::string& file, const std::string& problem) {
    std::fprintf(stderr, "qvr vitrea: %s: %s\n", file.c_str(), problem.c_str());
    return ExitFailures;
}

// The operand and the options with their values; flags have an empty value.
struct Options {
    std::string Output;
    std::map<std::string, std::string> Values;
    bool Has(const std::string& name) const { return Values.count(name) != 0; }
};

// Reads the operand (OUT, or what `operand` names) and "--name value" pairs;
// `flags` take no value. An empty text means success, otherwise it says what
// is wrong.
std::string parseOptions(const QvrCommand::Arguments& arguments, const std::vector<std::string>& names,
                         const std::vector<std::string>& flags, Options& options,
                         const std::string& operand = "the file to write") {
    auto listed = [](const std::vector<std::string>& list, const std::string& name) {
        return std::find(list.begin(), list.end(), name) != list.end();
    };
    for (size_t i = 1; i < arguments.size(); ++i) {
        const std::string& name = arguments[i];
        if (listed(flags, name)) {
            options.Values[name];
        } else if (listed(names, name)) {
            if (i + 1 >= arguments.size()) return "\"" + name + "\" needs a value";
            options.Values[name] = arguments[++i];
        } else if (name.rfind("--", 0) == 0 || !options.Output.empty()) {
            return "unexpected argument \"" + name + "\"";
        } else {
            options.Output = QvrSession::Absolute(name);
        }
    }
    return options.Output.empty() ? operand + " is missing" : std::string();
}

// ---------------------------------------------------------------- metrics

constexpr EStringId TextBadResolution = 65047;

int runMetrics(const QvrCommand::Arguments& arguments) {
    const std::vector<std::pair<std::string, long LMetricsQuickSetup::*>> numbers = {
        {"--dx", &LMetricsQuickSetup::dx}, {"--dy", &LMetricsQuickSetup::dy},
        {"--hx", &LMetricsQuickSetup::hx}, {"--hy", &LMetricsQuickSetup::hy},
        {"--vx", &LMetricsQuickSetup::vx}, {"--vy", &LMetricsQuickSetup::vy},
        {"--w", &LMetricsQuickSetup::w},   {"--h", &LMetricsQuickSetup::h}};
    std::vector<std::string> names = {"--resolution"};
    for (const auto& number : numbers)
        names.push_back(number.first);
    Options options;
    const std::string problem = parseOptions(arguments, names, {"--fix"}, options);
    if (!problem.empty()) return usage(problem);

    QvrSession session;
    if (!session.Started()) return ExitUsage;
    LMetricsQuickSetup setup = LMetricsQuickSetup::Load();
    for (const auto& [name, value] : numbers)
        if (options.Has(name) && !qvrParseLong32(options.Values[name], setup.*value))
            return usage(name + " wants a whole number of 32 bits, not \"" + options.Values[name] + "\"");
    LMetrics metrics;
    if (options.Has("--resolution") && !metrics.ParseResolution(options.Values["--resolution"]))
        return refuse(options.Output, EStringTable::Load(TextBadResolution));
    for (auto fault = setup.Check(); fault != LMetricsQuickSetup::Fault::None; fault = setup.Check()) {
        if (!options.Has("--fix"))
            return refuse(options.Output, LMetricsQuickSetup::FaultQuestion(fault) + " Use --fix.");
        setup.Fix(fault);
    }
    metrics.Windows = setup.Layout();
    std::string windowProblem;
    if (!metrics.Verify(windowProblem)) return refuse(options.Output, windowProblem);
    std::string failure;
    if (!metrics.SaveToFile(options.Output, failure)) return writeFailed(options.Output, failure);
    return ExitSuccess;
}

// ---------------------------------------------------------------- outputs

// The setup text for the stream: the given one, checked, or the stream's defaults.
bool setupText(const EImageOutputStream& stream, const Options& options, std::string& text) {
    const auto given = options.Values.find("--setup");
    const std::unique_ptr<EImageOutputSetup> setup = stream.UsesSetup() ? stream.CreateSetup() : nullptr;
    if (!setup) {
        text = given != options.Values.end() ? given->second : std::string();
        return true;
    }
    if (given != options.Values.end() && !setup->SetSetupString(given->second)) return false;
    text = setup->GetSetupString();
    return true;
}

bool switchOff(const std::string& list, LOutputFiles& outputs) {
    for (const std::string& part : qvrSplit(list, ',')) {
        long number = 0;
        if (!qvrParseLong(qvrTrim(part), number) || number < 1 ||
            number > static_cast<long>(LVitrea::ProjectorCount))
            return false;
        outputs.ProjectorActive[static_cast<size_t>(number - 1)] = false;
    }
    return true;
}

int runOutputs(const QvrCommand::Arguments& arguments) {
    Options options;
    const std::string problem =
        parseOptions(arguments, {"--file", "--dir", "--format", "--setup", "--off"}, {}, options);
    if (!problem.empty()) return usage(problem);

    QvrSession session;
    if (!session.Started()) return ExitUsage;
    LOutputFiles outputs;
    const EImageOutputStream* first = EImageOutputStream::GetFirst();
    outputs.StreamType = options.Has("--format") ? options.Values["--format"] : first ? first->GetName() : "";
    const EImageOutputStream* stream = outputs.GetStream();
    if (!stream) return refuse(options.Output, LOutputFiles::UnknownStreamText(outputs.StreamType));
    if (!setupText(*stream, options, outputs.StreamSetup))
        return refuse(options.Output,
                      "\"" + options.Values["--setup"] + "\" is no setup of \"" + outputs.StreamType + "\"");
    if (options.Has("--off") && !switchOff(options.Values["--off"], outputs))
        return usage("--off wants projector numbers from 1 to 18, not \"" + options.Values["--off"] + "\"");
    const std::string& directory = options.Values["--dir"];
    const std::string& file = options.Values["--file"];
    const std::string patternProblem = hOutputFilesGenerateDialog::CheckPatterns(stream, directory, file);
    if (!patternProblem.empty()) return refuse(options.Output, patternProblem);
    if (!outputs.Generate(directory, file))
        return refuse(options.Output, "These settings are not appropiate !");
    std::string failure;
    if (!outputs.SaveToFile(options.Output, failure)) return writeFailed(options.Output, failure);
    return ExitSuccess;
}

// ---------------------------------------------------------------- export

// Writes one definition file if its option is given: exit 2 when the data
// fail the check of the setup pages, 1 when the file can't be written.
template <class Definition>
int exportFile(const Definition& definition, const Options& options, const std::string& option) {
    const auto file = options.Values.find(option);
    if (file == options.Values.end()) return ExitSuccess;
    std::string problem;
    if (!definition.Verify(problem)) return refuse(file->second, problem);
    if (!definition.SaveToFile(file->second, problem)) return writeFailed(file->second, problem);
    return ExitSuccess;
}

int runExport(const QvrCommand::Arguments& arguments) {
    Options options;
    const std::string problem = parseOptions(
        arguments, {"--saver", "--calibration", "--metrics", "--outputs"}, {}, options, "PROJECT");
    if (!problem.empty()) return usage(problem);
    for (const char* option : {"--calibration", "--metrics", "--outputs"})
        if (options.Has(option)) options.Values[option] = QvrSession::Absolute(options.Values[option]);

    QvrSession session;
    if (!session.Started()) return ExitUsage;
    hReportRoot report("Loading");
    if (!session.GetApp().GetDocument().OnOpenDocument(options.Output, &report))
        return refuse(options.Output, "the project could not be loaded");
    std::string missing;
    const auto* saver =
        QvrSaverLookup::FindSaverOf<isvrVitrea>(options.Values["--saver"], "projector array saver", missing);
    if (!saver) return refuse(options.Output, missing);
    const LConfiguration& configuration = saver->GetConfiguration();
    int status = exportFile(configuration.Calibration, options, "--calibration");
    status = std::max(status, exportFile(configuration.Metrics, options, "--metrics"));
    return std::max(status, exportFile(configuration.OutputFiles, options, "--outputs"));
}

int runVitrea(const QvrCommand::Arguments& arguments) {
    if (arguments.empty()) {
        std::fputs(Help, stderr);
        return ExitUsage;
    }
    if (arguments[0] == "metrics") return runMetrics(arguments);
    if (arguments[0] == "outputs") return runOutputs(arguments);
    if (arguments[0] == "export") return runExport(arguments);
    return usage("unknown subcommand \"" + arguments[0] + "\"");
}

QvrCommand vitrea("vitrea", "write the definition files of a projector array saver", Help, runVitrea);

} // namespace
