/// @file
/// Private: enters what every Object can do on other threads.
#pragma once

namespace qz::detail {

void registerNSObjectThreads();

}  // namespace qz::detail
