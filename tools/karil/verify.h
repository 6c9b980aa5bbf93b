// The parts of the command verify.
#ifndef KARIL_TOOL_VERIFY_H
#define KARIL_TOOL_VERIFY_H

#include "files.h"
#include "link.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

struct VerifyOptions {
    std::string file;
    std::vector<std::string> issuers;
    std::string content; // of a message that has none; empty if it was not named
    bool asJson = false;
};

// Every signer of a signed message: writes what it found into the object that is open, and tells whether all is good.
bool verifyMessage(Printer &printer, const Document &document, const VerifyOptions &options,
                   const std::vector<karil::Certificate> &issuers);

} // namespace tool

#endif
