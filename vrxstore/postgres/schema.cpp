#include <vrxstore/postgres/schema.h>

namespace vrx::store {

// Names and meanings are those of the tables in a file. Texts compare by their bytes ("C"), as they do there, whatever the
// language of the database. Long texts are found by hash indices, which take texts of any length. Numbers of rows are
// given out by the writer, who is alone. The server keeps references but for those of trials and what belongs to them: it
// would ask for each row alone, and triple the time of storing; they are looked at when a job is verified.
const char* const kFirstServerTables = R"(
CREATE TABLE vrx_tables(
  application bigint NOT NULL,
  version integer NOT NULL
);
INSERT INTO vrx_tables VALUES(1450342449, 1);
CREATE TABLE job(
  id bigint PRIMARY KEY CHECK(id = 1),
  name text NOT NULL,
  created text COLLATE "C" NOT NULL,
  library text NOT NULL
);
CREATE TABLE settings(
  id bigint PRIMARY KEY,
  conditions text NOT NULL,
  limits bytea NOT NULL
);
CREATE INDEX settings_by_limits ON settings USING hash(limits);
CREATE TABLE measuring(
  id bigint PRIMARY KEY,
  content text COLLATE "C" NOT NULL,
  EXCLUDE USING hash(content WITH =)
);
CREATE TABLE standard(
  id bigint PRIMARY KEY,
  name text COLLATE "C" NOT NULL,
  version integer NOT NULL,
  removed integer NOT NULL DEFAULT 0,
  EXCLUDE USING hash(name WITH =)
);
CREATE TABLE standard_version(
  id bigint PRIMARY KEY,
  standard bigint NOT NULL REFERENCES standard(id),
  version integer NOT NULL,
  added text COLLATE "C" NOT NULL,
  conditions text,
  digest bytea NOT NULL,
  UNIQUE(standard, version)
);
CREATE TABLE curve(
  id bigint PRIMARY KEY,
  standard_version bigint NOT NULL REFERENCES standard_version(id),
  "Angle" integer,
  samples float8[] NOT NULL,
  measured text NOT NULL,
  measuring bigint NOT NULL REFERENCES measuring(id)
);
CREATE INDEX curve_of_version ON curve(standard_version);
CREATE INDEX curve_of_angle ON curve("Angle") WHERE "Angle" IS NOT NULL;
CREATE TABLE tolerance(
  id bigint PRIMARY KEY,
  standard_version bigint NOT NULL REFERENCES standard_version(id),
  "Angle" integer,
  illuminant integer,
  limits bytea NOT NULL
);
CREATE INDEX tolerance_of_version ON tolerance(standard_version);
CREATE TABLE batch(
  id bigint PRIMARY KEY,
  taken text COLLATE "C" NOT NULL,
  source text NOT NULL,
  trials bigint NOT NULL,
  digest bytea NOT NULL
);
CREATE INDEX batch_of_digest ON batch(digest);
CREATE INDEX batch_by_time ON batch(taken);
CREATE TABLE trial(
  id bigint PRIMARY KEY,
  batch bigint NOT NULL,
  name text COLLATE "C" NOT NULL,
  title text NOT NULL,
  "Angle" integer,
  samples float8[] NOT NULL,
  measured text NOT NULL,
  measuring bigint NOT NULL
);
CREATE INDEX trial_by_name ON trial USING hash(name);
CREATE INDEX trial_of_batch ON trial(batch);
CREATE TABLE reading(
  trial bigint NOT NULL,
  place integer NOT NULL,
  samples float8[] NOT NULL,
  PRIMARY KEY(trial, place)
);
CREATE TABLE judgement(
  id bigint PRIMARY KEY,
  trial bigint NOT NULL,
  standard_version bigint NOT NULL,
  curve bigint NOT NULL,
  settings bigint NOT NULL,
  library text NOT NULL,
  verdict integer NOT NULL
);
CREATE INDEX judgement_of_trial ON judgement(trial);
CREATE INDEX judgement_of_standard ON judgement(standard_version, trial);
CREATE TABLE outcome(
  judgement bigint NOT NULL,
  place integer NOT NULL,
  illuminant integer NOT NULL,
  available integer NOT NULL,
  difference float8,
  numbers bytea NOT NULL,
  word0 integer NOT NULL,
  word1 integer NOT NULL,
  word2 integer NOT NULL,
  box integer NOT NULL,
  total integer NOT NULL,
  verdict integer NOT NULL,
  broken integer NOT NULL,
  PRIMARY KEY(judgement, place)
);
CREATE TABLE trail(
  id bigint PRIMARY KEY,
  at text COLLATE "C" NOT NULL,
  "user" text NOT NULL,
  by text NOT NULL,
  what text NOT NULL,
  subject text NOT NULL,
  why text NOT NULL,
  content bytea NOT NULL,
  previous bytea NOT NULL UNIQUE,
  digest bytea NOT NULL
);
CREATE TABLE decision(
  id bigint PRIMARY KEY,
  trial bigint NOT NULL REFERENCES trial(id),
  accepted integer NOT NULL,
  trail bigint NOT NULL REFERENCES trail(id)
);
CREATE INDEX decision_of_trial ON decision(trial, id);
CREATE TABLE profile(
  name text COLLATE "C" PRIMARY KEY,
  options text NOT NULL
);
CREATE FUNCTION vrx_keeps_rows() RETURNS trigger LANGUAGE plpgsql AS
  'BEGIN RAISE EXCEPTION ''rows of the table % stay as they are'', TG_TABLE_NAME; END';
CREATE TRIGGER trail_keeps_rows BEFORE DELETE ON trail FOR EACH ROW EXECUTE FUNCTION vrx_keeps_rows();
CREATE TRIGGER trail_keeps_all BEFORE TRUNCATE ON trail FOR EACH STATEMENT EXECUTE FUNCTION vrx_keeps_rows();
CREATE TRIGGER trail_keeps_words BEFORE UPDATE ON trail FOR EACH ROW EXECUTE FUNCTION vrx_keeps_rows();
CREATE TRIGGER trial_keeps_words BEFORE UPDATE ON trial FOR EACH ROW EXECUTE FUNCTION vrx_keeps_rows();
)";

// Version 2: recipes that were made. Amounts are lines of a component's name and an amount, a tab between them.
const char* const kLaterServerTables[kSchemaVersion - 1] = {R"(
CREATE TABLE recipe(
  id bigint PRIMARY KEY,
  name text NOT NULL,
  added text COLLATE "C" NOT NULL,
  amounts text NOT NULL,
  "Angle" integer,
  samples float8[] NOT NULL,
  measured text NOT NULL,
  measuring bigint NOT NULL REFERENCES measuring(id),
  removed integer NOT NULL DEFAULT 0,
  digest bytea NOT NULL UNIQUE
);
)"};

}  // namespace vrx::store
