#pragma once
// Collects the debug lines written while it lives, from any thread.

#include "foundation/qvrTrace.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class TraceCapture {
public:
    TraceCapture() : Lines(std::make_shared<Store>()) {
        qvrSetTraceSink([store = Lines](const std::string& line) {
            std::lock_guard lock(store->Guard);
            store->Lines.push_back(line);
        });
    }
    ~TraceCapture() { qvrSetTraceSink({}); }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    std::vector<std::string> Get() const {
        std::lock_guard lock(Lines->Guard);
        return Lines->Lines;
    }
    bool Contains(const std::string& line) const {
        const std::vector<std::string> lines = Get();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

private:
    struct Store {
        std::mutex Guard;
        std::vector<std::string> Lines;
    };
    std::shared_ptr<Store> Lines;
};
