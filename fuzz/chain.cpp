// Chains as people write them, in text or JSON: what can be read can be written and read again.
#include "Bytes.h"

#include <host/chain/Chain.h>
#include <host/text/Error.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
try {
    using host::Chain;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const bool isJson = text.starts_with("[") || text.starts_with("{");
    const Chain chain = isJson ? Chain::fromJson(text, "fuzz") : Chain::fromText(text);
    check(Chain::fromText(chain.text()).json() == chain.json(), "text says all");
    check(Chain::fromJson(chain.json(), "fuzz").text() == chain.text(), "JSON says all");
    if (!chain.isEmpty() && chain.text().find("lut ") == std::string::npos) // which reads files
        chain.build();
    return 0;
} catch (const host::Error&) {
    return 0;
}
