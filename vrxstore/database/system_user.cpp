#include <vrxstore/database/system_user.h>

#include <cstddef>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace vrx::store {

std::string SystemUser() {
  constexpr std::size_t kMost = 16384;
  std::vector<char> texts(kMost);
  passwd entry{};
  passwd* found = nullptr;
  const uid_t user = geteuid();
  if (getpwuid_r(user, &entry, texts.data(), texts.size(), &found) == 0 && found != nullptr)
    return found->pw_name;
  return std::to_string(user);
}

}  // namespace vrx::store
