-- Functions over curves of 40 numbers in percent, from 360 to 750 nm. NULL gives NULL; so does a curve that is unset.

CREATE FUNCTION vrx_tristimulus(curve float8[], illuminant text, observer integer DEFAULT 10) RETURNS float8[]
  AS 'MODULE_PATHNAME' LANGUAGE C IMMUTABLE PARALLEL SAFE STRICT;
CREATE FUNCTION vrx_lab(curve float8[], illuminant text, observer integer DEFAULT 10) RETURNS float8[]
  AS 'MODULE_PATHNAME' LANGUAGE C IMMUTABLE PARALLEL SAFE STRICT;
CREATE FUNCTION vrx_delta(standard float8[], trial float8[], system text, illuminant text, observer integer DEFAULT 10,
    parameters text DEFAULT '', angle text DEFAULT '') RETURNS float8
  AS 'MODULE_PATHNAME' LANGUAGE C IMMUTABLE PARALLEL SAFE STRICT;
CREATE FUNCTION vrx_words(standard float8[], trial float8[], system text, illuminant text, observer integer DEFAULT 10,
    parameters text DEFAULT '') RETURNS text
  AS 'MODULE_PATHNAME' LANGUAGE C IMMUTABLE PARALLEL SAFE STRICT;
CREATE FUNCTION vrx_judge(standard float8[], trial float8[], system text, tolerance float8, illuminants text,
    observer integer DEFAULT 10, parameters text DEFAULT '', angle text DEFAULT '') RETURNS text
  AS 'MODULE_PATHNAME' LANGUAGE C IMMUTABLE PARALLEL SAFE STRICT;
CREATE FUNCTION vrx_version() RETURNS text
  AS 'MODULE_PATHNAME' LANGUAGE C IMMUTABLE PARALLEL SAFE STRICT;
