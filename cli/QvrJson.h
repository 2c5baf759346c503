#pragma once
// A small writer of JSON text for the commands' --json output: objects,
// arrays, strings with escapes, numbers. The caller keeps the nesting right.

#include <string>
#include <string_view>

class QvrJson {
public:
    QvrJson& BeginObject();
    QvrJson& EndObject();
    QvrJson& BeginArray();
    QvrJson& EndArray();
    QvrJson& Key(std::string_view key);
    QvrJson& String(std::string_view text);
    QvrJson& Number(long value);

    const std::string& Text() const { return Out; }

private:
    void separate();

    std::string Out;
    bool NeedComma = false;
};
