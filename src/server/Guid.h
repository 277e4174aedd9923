#pragma once
// Class and interface ids: comparison and their braced text form.
#include <optional>
#include <string>

#include "varsentix/server/Server.h"

namespace varsentix::server::detail {

bool sameGuid(const VX_GUID& a, const VX_GUID& b) noexcept;
// "{B9887F9B-6D25-4F2A-B319-69015EC91317}": braced, upper-case hexadecimal digits.
std::string guidText(const VX_GUID& guid);
// Reads the braced form (either letter case, blanks around it allowed); nothing otherwise.
std::optional<VX_GUID> parseGuid(const std::string& text);

}  // namespace varsentix::server::detail
