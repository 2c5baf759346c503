#include "foundation/qvrTrace.h"

#include "foundation/qvrString.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace {

int debugLevelFromEnvironment() {
    const char* value = std::getenv("QVR_DEBUG");
    if (!value || !*value) return 0;
    long level = 0;
    return qvrParseLong(value, level) ? static_cast<int>(level) : 1;
}

struct TraceChannel {
    std::mutex guard;
    qvrTraceSink sink;
    int level = debugLevelFromEnvironment();
};

TraceChannel& channel() {
    static TraceChannel instance;
    return instance;
}

void emit(int neededLevel, const std::string& text) {
    TraceChannel& ch = channel();
    std::lock_guard lock(ch.guard);
    if (ch.sink) {
        ch.sink(text);
    } else if (ch.level >= neededLevel) {
        std::fputs(text.c_str(), stderr);
    }
}

} // namespace

void qvrTrace(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string text = qvrFormatV(format, args);
    va_end(args);
    emit(1, text);
}

void qvrTraceVerbose(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string text = qvrFormatV(format, args);
    va_end(args);
    emit(2, text);
}

void qvrTraceText(const std::string& text) {
    emit(1, text);
}

void qvrSetTraceSink(qvrTraceSink sink) {
    TraceChannel& ch = channel();
    std::lock_guard lock(ch.guard);
    ch.sink = std::move(sink);
}
