#pragma once

namespace reference {

/// Prints a line for everything that the library computes: its name, and a number made from the bytes of its results
/// for inputs of all kinds. Instruction sets have to agree in every line.
void printDigests();

} // namespace reference
