// How a job is named: by a file, or by the URL of a server's database.

#ifndef VRXSTORE_JOB_ADDRESS_H_
#define VRXSTORE_JOB_ADDRESS_H_

#include <string>
#include <string_view>

namespace vrx::store {

/// Whether a job is named by the URL of a PostgreSQL server (`postgresql://user@host:port/database`, or `postgres://`), and not by
/// a file.
bool IsOnServer(std::string_view job);

/// How messages and reports call a job: its file as it is, its URL without the password and without what follows a "?".
std::string ShownJob(const std::string& job);

/// What is wrong with a URL, so that no part of its password could be taken for something else and be shown; empty where nothing
/// is.
std::string FaultOfAddress(std::string_view url);

}  // namespace vrx::store

#endif  // VRXSTORE_JOB_ADDRESS_H_
