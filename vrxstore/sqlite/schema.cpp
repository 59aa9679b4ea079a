#include <vrxstore/sqlite/schema.h>

namespace vrx::store {

// Angle is the library's code of a geometry, as its filters for queries name it; NULL where nothing said one.
const char* const kFirstTables = R"(
CREATE TABLE job(
  id INTEGER PRIMARY KEY CHECK(id = 1),
  name TEXT NOT NULL,
  created TEXT NOT NULL,
  library TEXT NOT NULL
);
CREATE TABLE settings(
  id INTEGER PRIMARY KEY,
  conditions TEXT NOT NULL,
  limits BLOB NOT NULL,
  UNIQUE(conditions, limits)
);
CREATE TABLE measuring(
  id INTEGER PRIMARY KEY,
  content TEXT NOT NULL UNIQUE
);
CREATE TABLE standard(
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL UNIQUE,
  version INTEGER NOT NULL,
  removed INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE standard_version(
  id INTEGER PRIMARY KEY,
  standard INTEGER NOT NULL REFERENCES standard(id),
  version INTEGER NOT NULL,
  added TEXT NOT NULL,
  conditions TEXT,
  digest BLOB NOT NULL,
  UNIQUE(standard, version)
);
CREATE TABLE curve(
  id INTEGER PRIMARY KEY,
  standard_version INTEGER NOT NULL REFERENCES standard_version(id),
  Angle INTEGER,
  samples BLOB NOT NULL,
  measured TEXT NOT NULL,
  measuring INTEGER NOT NULL REFERENCES measuring(id)
);
CREATE INDEX curve_of_version ON curve(standard_version);
CREATE INDEX curve_of_angle ON curve(Angle) WHERE Angle IS NOT NULL;
CREATE TABLE tolerance(
  id INTEGER PRIMARY KEY,
  standard_version INTEGER NOT NULL REFERENCES standard_version(id),
  Angle INTEGER,
  illuminant INTEGER,
  limits BLOB NOT NULL
);
CREATE INDEX tolerance_of_version ON tolerance(standard_version);
CREATE TABLE batch(
  id INTEGER PRIMARY KEY,
  taken TEXT NOT NULL,
  source TEXT NOT NULL,
  trials INTEGER NOT NULL,
  digest BLOB NOT NULL
);
CREATE INDEX batch_of_digest ON batch(digest);
CREATE INDEX batch_by_time ON batch(taken);
CREATE TABLE trial(
  id INTEGER PRIMARY KEY,
  batch INTEGER NOT NULL REFERENCES batch(id),
  name TEXT NOT NULL,
  title TEXT NOT NULL,
  Angle INTEGER,
  samples BLOB NOT NULL,
  measured TEXT NOT NULL,
  measuring INTEGER NOT NULL REFERENCES measuring(id)
);
CREATE INDEX trial_by_name ON trial(name);
CREATE INDEX trial_of_batch ON trial(batch);
CREATE TABLE reading(
  trial INTEGER NOT NULL REFERENCES trial(id),
  place INTEGER NOT NULL,
  samples BLOB NOT NULL,
  PRIMARY KEY(trial, place)
) WITHOUT ROWID;
CREATE TABLE judgement(
  id INTEGER PRIMARY KEY,
  trial INTEGER NOT NULL REFERENCES trial(id),
  standard_version INTEGER NOT NULL REFERENCES standard_version(id),
  curve INTEGER NOT NULL REFERENCES curve(id),
  settings INTEGER NOT NULL REFERENCES settings(id),
  library TEXT NOT NULL,
  verdict INTEGER NOT NULL
);
CREATE INDEX judgement_of_trial ON judgement(trial);
CREATE INDEX judgement_of_standard ON judgement(standard_version, trial);
CREATE TABLE outcome(
  judgement INTEGER NOT NULL REFERENCES judgement(id),
  place INTEGER NOT NULL,
  illuminant INTEGER NOT NULL,
  available INTEGER NOT NULL,
  difference REAL,
  numbers BLOB NOT NULL,
  word0 INTEGER NOT NULL,
  word1 INTEGER NOT NULL,
  word2 INTEGER NOT NULL,
  box INTEGER NOT NULL,
  total INTEGER NOT NULL,
  verdict INTEGER NOT NULL,
  broken INTEGER NOT NULL,
  PRIMARY KEY(judgement, place)
) WITHOUT ROWID;
CREATE TABLE decision(
  id INTEGER PRIMARY KEY,
  trial INTEGER NOT NULL REFERENCES trial(id),
  accepted INTEGER NOT NULL,
  trail INTEGER NOT NULL REFERENCES trail(id)
);
CREATE INDEX decision_of_trial ON decision(trial);
CREATE TABLE profile(
  name TEXT PRIMARY KEY,
  options TEXT NOT NULL
) WITHOUT ROWID;
CREATE TABLE trail(
  id INTEGER PRIMARY KEY,
  at TEXT NOT NULL,
  user TEXT NOT NULL,
  by TEXT NOT NULL,
  what TEXT NOT NULL,
  subject TEXT NOT NULL,
  why TEXT NOT NULL,
  content BLOB NOT NULL,
  previous BLOB NOT NULL UNIQUE,
  digest BLOB NOT NULL
);
CREATE TRIGGER trail_keeps_rows BEFORE DELETE ON trail
  BEGIN SELECT RAISE(ABORT, 'rows of the trail stay'); END;
CREATE TRIGGER trail_keeps_words BEFORE UPDATE ON trail
  BEGIN SELECT RAISE(ABORT, 'rows of the trail stay as they are'); END;
CREATE TRIGGER trial_keeps_words BEFORE UPDATE ON trial
  BEGIN SELECT RAISE(ABORT, 'trials stay as they are'); END;
)";

// Version 2: recipes that were made. Amounts are lines of a component's name and an amount, a tab between them.
const char* const kLaterTables[kSchemaVersion - 1] = {R"(
CREATE TABLE recipe(
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL,
  added TEXT NOT NULL,
  amounts TEXT NOT NULL,
  Angle INTEGER,
  samples BLOB NOT NULL,
  measured TEXT NOT NULL,
  measuring INTEGER NOT NULL REFERENCES measuring(id),
  removed INTEGER NOT NULL DEFAULT 0,
  digest BLOB NOT NULL UNIQUE
);
)"};

}  // namespace vrx::store
