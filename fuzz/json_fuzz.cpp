// Documents. Events and error are the same with the narrowest vectors and at every address of the
// text. The events written as text give the same events when they are read. An abort only ends
// them, and a small buffer only cuts the error.
//
// The input's first byte chooses the size of the error buffer, the second the event at which the
// callback aborts; the rest is the document.

#include "support/json_outcome.h"

#include <cstdint>
#include <vector>

extern "C" decltype(jsonParse) narrow_jsonParse;

static std::string told_by(decltype(jsonParse)* parse, const std::vector<char>& document) {
    std::string events;
    char error[300] = "";
    const auto tell = [](JSONType type, const JSONVal* value, void* arg) {
        *static_cast<std::string*>(arg) += event_text(type, value);
    };
    const int result = parse(document.data(), tell, &events, error, sizeof error);
    return events + std::to_string(result) + error;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    std::vector<char> document(data + 2, data + size);  // a block of exactly its size
    document.push_back('\0');
    const JsonOutcome outcome = json_outcome(document.data());

    const JsonOutcome again = json_outcome(outcome.events.c_str());
    require(again.events == outcome.events && (outcome.result != 0 || again.result == 0));

    const size_t errlen = 1 + data[0];
    const JsonOutcome cut = json_outcome(document.data(), errlen);
    require(cut.events == outcome.events && cut.error == cut_error(outcome.error, errlen));

    const JsonOutcome aborted = json_outcome(document.data(), errlen, data[1]);
    require(outcome.events.starts_with(aborted.events));
    require(aborted.events_left == SIZE_MAX ? aborted.error.starts_with(cut_error("stop", errlen))
                                            : aborted.error == cut.error);

    document.insert(document.begin(), size % 70 + (data[0] % 4 == 0 ? 3960 : 0), ' ');
    require(told_by(jsonParse, document) == told_by(narrow_jsonParse, document));
    const JsonOutcome moved = json_outcome(document.data());
    require(moved.events == outcome.events && moved.error == outcome.error);
    return 0;
}
