#pragma once

#include <host/chain/Chain.h>
#include <host/operation/Operation.h>

namespace host {

/// --device, for operations that can run on both.
Parameter deviceParameter();

/// Whether a chain is to run on the GPU, and what there is to say of that. Throws Error of the kind Device where
/// it is asked for and not there.
bool takesGPU(const Call& call, const Chain& chain, std::vector<std::string>& notes);

} // namespace host
