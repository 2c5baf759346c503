#include "QvrJson.h"

#include "foundation/qvrString.h"

void QvrJson::separate() {
    if (NeedComma) Out += ',';
    NeedComma = false;
}

QvrJson& QvrJson::BeginObject() {
    separate();
    Out += '{';
    return *this;
}

QvrJson& QvrJson::EndObject() {
    Out += '}';
    NeedComma = true;
    return *this;
}

QvrJson& QvrJson::BeginArray() {
    separate();
    Out += '[';
    return *this;
}

QvrJson& QvrJson::EndArray() {
    Out += ']';
    NeedComma = true;
    return *this;
}

QvrJson& QvrJson::Key(std::string_view key) {
    String(key);
    Out += ':';
    NeedComma = false;
    return *this;
}

QvrJson& QvrJson::String(std::string_view text) {
    separate();
    Out += '"';
    for (char c : text) {
        switch (c) {
        case '"':
            Out += "\\\"";
            break;
        case '\\':
            Out += "\\\\";
            break;
        case '\n':
            Out += "\\n";
            break;
        case '\r':
            Out += "\\r";
            break;
        case '\t':
            Out += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20)
                Out += qvrFormat("\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
            else
                Out += c;
        }
    }
    Out += '"';
    NeedComma = true;
    return *this;
}

QvrJson& QvrJson::Number(long value) {
    separate();
    Out += qvrFormat("%ld", value);
    NeedComma = true;
    return *this;
}
