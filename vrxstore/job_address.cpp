#include <vrxstore/job_address.h>

#include <algorithm>
#include <cstddef>

namespace vrx::store {
namespace {

constexpr std::string_view kHidden = ":***";

// The parts of a URL as a reader takes them apart who trusts nothing: the password may hold any character.
struct AddressParts {
  std::string_view scheme, user, place, query;
  bool hasUser = false;
};

AddressParts PartsOf(std::string_view url) {
  AddressParts parts;
  const std::size_t begin = url.find("://") + 3;
  parts.scheme = url.substr(0, begin);
  std::string_view rest = url.substr(begin);
  const std::size_t question = std::min(rest.find('?'), rest.size());
  parts.query = rest.substr(question);
  rest = rest.substr(0, question);
  const std::size_t at = rest.rfind('@');
  parts.hasUser = at != std::string_view::npos;
  if (parts.hasUser) parts.user = rest.substr(0, at);
  parts.place = parts.hasUser ? rest.substr(at + 1) : rest;
  return parts;
}

// Whether hosts and their ports, before the database, are such: "localhost:5432", "[::1]:5432,other".
bool HasPlainPorts(std::string_view place) {
  std::string_view hosts = place.substr(0, place.find('/'));
  while (!hosts.empty()) {
    const std::size_t comma = std::min(hosts.find(','), hosts.size());
    std::string_view host = hosts.substr(0, comma);
    hosts.remove_prefix(std::min(comma + 1, hosts.size()));
    if (host.starts_with('[')) host.remove_prefix(std::min(host.find(']'), host.size()));
    const std::size_t colon = std::min(host.find(':'), host.size());
    if (!std::ranges::all_of(host.substr(std::min(colon + 1, host.size())),
                             [](char digit) { return digit >= '0' && digit <= '9'; }))
      return false;
  }
  return true;
}

}  // namespace

bool IsOnServer(std::string_view job) {
  return job.starts_with("postgresql://") || job.starts_with("postgres://");
}

std::string ShownJob(const std::string& job) {
  if (!IsOnServer(job)) return job;
  const AddressParts parts = PartsOf(job);
  std::string shown(parts.scheme);
  if (parts.hasUser) {
    const std::size_t colon = parts.user.find(':');
    shown += parts.user.substr(0, colon);
    if (colon != std::string_view::npos) shown += kHidden;
    return shown.append("@").append(parts.place);
  }
  // What looks like a port may be a password whose host is missing or lies behind a question mark.
  const bool isSafe = HasPlainPorts(parts.place) && parts.query.find('@') == std::string_view::npos;
  const std::size_t colon = isSafe ? std::string_view::npos : parts.place.find(':');
  shown += parts.place.substr(0, colon);
  if (colon != std::string_view::npos) shown += kHidden;
  return shown;
}

std::string FaultOfAddress(std::string_view url) {
  const AddressParts parts = PartsOf(url);
  if (parts.user.find_first_of("@/") != std::string_view::npos ||
      parts.query.find('@') != std::string_view::npos)
    return "in a user and a password of a URL, @ is written as %40, / as %2F and ? as %3F";
  if (!HasPlainPorts(parts.place)) return "the port of a server is a number";
  return {};
}

}  // namespace vrx::store
