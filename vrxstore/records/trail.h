// Digests: of the rows of the trail, each of which takes in the one before, and of the content that rows speak of.

#ifndef VRXSTORE_RECORDS_TRAIL_H_
#define VRXSTORE_RECORDS_TRAIL_H_

#include <cstdint>
#include <string>
#include <string_view>

#include <vrxstore/digest/digest.h>
#include <vrxstore/records/records.h>

namespace vrx::store {

/// The SHA-256 digest of texts one after the other. Each goes in with its length in front, so that no two lists of texts have
/// the same bytes.
class ContentDigest {
 public:
  void Add(std::string_view text);
  void Add(std::int64_t number);
  /// The 32 bytes of the digest; call once.
  std::string Finish() { return digest_.Finish(); }

 private:
  Digest digest_;
};

/// The digest of a row of the trail: of the one before, then its number and its texts in the order of TrailRow.
std::string DigestOf(const TrailRow& row);

/// Adds what a trial is, without its verdict, to the digest of its batch. `standard`: the number of its standard, which stays
/// when that gets another name or version.
void AddTrial(ContentDigest& digest, const NewTrial& trial, std::int64_t standard);
/// The same of a trial as a job gives it back.
void AddTrial(ContentDigest& digest, const StoredTrial& trial);

/// The digest of a version of a standard: its curves, conditions and limits.
std::string DigestOf(const Standard& standard);

/// The digest of a recipe: its name, amounts and curve.
std::string DigestOf(const MadeRecipe& recipe);

}  // namespace vrx::store

#endif  // VRXSTORE_RECORDS_TRAIL_H_
