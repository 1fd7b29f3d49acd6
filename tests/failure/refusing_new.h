#pragma once

#include <cstdint>

/// The allocation functions of the program, in refusing_new.cpp: they count blocks and refuse some.
namespace refusal {

enum class Manner { Throws, Null };

/// Blocks asked for, and blocks not yet given back, since the program began.
std::int64_t Requests();
std::int64_t LiveBlocks();

/// Refuses the request after the next @p granted ones, and all after it when @p forever. Only `operator new[]` can
/// refuse by null; `new` for one object throws then too.
void Begin(std::int64_t granted, Manner manner, bool forever);
/// Grants everything again. @return true when a request was refused since Begin().
bool End();

}  // namespace refusal
