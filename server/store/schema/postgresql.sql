-- The functions of the query language, with the results of those that SQLite connections register.
-- All are strict: NULL gives NULL. An empty text is NULL. What is refused has the state QE001.

CREATE FUNCTION QEL_REFUSE(MESSAGE text) RETURNS text
LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE AS $$
BEGIN
    RAISE EXCEPTION USING ERRCODE = 'QE001', MESSAGE = MESSAGE;
END $$;

-- Character by character, whatever the collation of the column is; @CASE@ maps all of Unicode.
CREATE FUNCTION QEL_UPPER(VALUE text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN pg_catalog.upper(VALUE COLLATE @CASE@) COLLATE "C";

CREATE FUNCTION QEL_LOWER(VALUE text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN pg_catalog.lower(VALUE COLLATE @CASE@) COLLATE "C";

-- The grams of texts, which find their parts: first each character, then every two beside each
-- other, in upper case. Names nothing outside of pg_catalog, as whoever keeps an index looks
-- for nothing elsewhere. The cost keeps the planner from asking it for every row of a table.
CREATE FUNCTION QEL_GRAMS(VARIADIC TEXTS text[]) RETURNS text[]
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE COST 500 AS $$
DECLARE
    characters text[] := string_to_array(
        upper(array_to_string(TEXTS, chr(1)) COLLATE @CASE@), NULL);
    grams text[] := characters;
BEGIN
    FOR i IN 2 .. cardinality(characters) LOOP
        grams := grams || (characters[i - 1] || characters[i]);
    END LOOP;
    RETURN grams;
END $$;

-- Those of them that a text with this part has and few others: the twos if there are any.
CREATE FUNCTION QEL_PART_GRAMS(PART text) RETURNS text[]
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
    grams text[] := QEL_GRAMS(PART);
    size integer := (cardinality(grams) + 1) / 2;
BEGIN
    RETURN CASE WHEN size > 1 THEN grams[size + 1:] ELSE grams END;
END $$;

-- Positions count characters from 1, from the end if negative; 0 is 1.
CREATE FUNCTION QEL_SUBSTR(VALUE text, POSITION_ double precision, WANTED double precision)
RETURNS text LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
    size bigint := length(VALUE);
    place bigint := trunc(greatest(least(POSITION_, 4e18), -4e18));
    start bigint := CASE WHEN place > 0 THEN place - 1 WHEN place < 0 THEN size + place ELSE 0 END;
    count bigint := trunc(greatest(least(WANTED, 4e18), -4e18));
BEGIN
    IF start < 0 OR start >= size OR count < 1 THEN
        RETURN NULL;
    END IF;
    RETURN substr(VALUE, start::integer + 1, least(count, size)::integer);
END $$;

CREATE FUNCTION QEL_SUBSTR(VALUE text, POSITION_ double precision) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN QEL_SUBSTR(VALUE, POSITION_, length(VALUE)::double precision);

-- Blanks around a number are allowed, and a plus before it.
CREATE FUNCTION QEL_NUMBER(VALUE text) RETURNS numeric
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
    number numeric;
BEGIN
    IF VALUE ~ '^ *\+?-?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][+-]?[0-9]+)? *$' THEN
        number := ltrim(VALUE, ' +')::numeric;
        -- what a double precision number has no room for is none
        IF number = 0 OR abs(number) BETWEEN 5e-324 AND 1.797e308 THEN
            RETURN number;
        END IF;
    END IF;
    PERFORM QEL_REFUSE('“' || left(VALUE, 60) || '”不是数字');
END $$;

CREATE FUNCTION QEL_NUMBER(VALUE numeric) RETURNS numeric
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN VALUE;

CREATE FUNCTION QEL_NUMBER(VALUE double precision) RETURNS double precision
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN VALUE;

-- No zero before the point.
CREATE FUNCTION QEL_NUMBER_TEXT(VALUE numeric) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN regexp_replace(trim_scale(VALUE)::text, '^(-?)0\.', '\1.') COLLATE "C";

-- 15 digits, as a number of this type becomes a numeric.
CREATE FUNCTION QEL_NUMBER_TEXT(VALUE double precision) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN QEL_NUMBER_TEXT(VALUE::numeric);

CREATE FUNCTION QEL_NUMBER_TEXT(VALUE bigint) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN VALUE::text COLLATE "C";

CREATE FUNCTION QEL_DIVIDE(DIVIDEND double precision, DIVISOR double precision)
RETURNS double precision LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
BEGIN
    IF DIVISOR = 0 THEN
        PERFORM QEL_REFUSE('除数为零');
    END IF;
    RETURN DIVIDEND / DIVISOR;
END $$;

-- Cut towards zero.
CREATE FUNCTION QEL_TRUNC(VALUE double precision, PLACES double precision)
RETURNS double precision LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
    scale double precision := power(10.0::double precision,
                                    greatest(-15, least(15, trunc(PLACES))));
    scaled double precision := VALUE * scale;
    rounded double precision := round(scaled);
BEGIN
    -- 2.3 * 100 is a hair below 230: what 15 digits do not show is not cut
    IF abs(scaled - rounded) < abs(scaled) * 1e-15 THEN
        RETURN rounded / scale;
    END IF;
    RETURN trunc(scaled) / scale;
END $$;

CREATE FUNCTION QEL_TRUNC(VALUE double precision) RETURNS double precision
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN QEL_TRUNC(VALUE, 0);

-- The time that a text names in a format; NULL if it does not fit. Elements: YYYY MM DD HH24 HH12 HH
-- MI SS and punctuation. Text that ends early leaves the rest at its least value.
CREATE FUNCTION QEL_TIME_OF(VALUE text, FORMAT text) RETURNS timestamp
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
    names CONSTANT text[] := ARRAY['YYYY', 'YY', 'MM', 'DD', 'HH24', 'HH12', 'HH', 'MI', 'SS'];
    places CONSTANT integer[] := ARRAY[1, 0, 2, 3, 4, 4, 4, 5, 6];
    digits CONSTANT integer[] := ARRAY[4, 2, 2, 2, 2, 2, 2, 2, 2];
    least_ CONSTANT integer[] := ARRAY[1, 0, 1, 1, 0, 1, 1, 0, 0];
    most CONSTANT integer[] := ARRAY[9999, -1, 12, 31, 23, 12, 12, 59, 59];
    punctuation CONSTANT text := '-/:.,; ';
    pattern text := upper(FORMAT COLLATE "C");
    left_ text := btrim(VALUE, ' ');
    parts integer[] := ARRAY[0, 1, 1, 0, 0, 0];
    element integer;
    number text;
BEGIN
    WHILE pattern <> '' AND left_ <> '' LOOP
        element := 0;
        FOR i IN 1 .. 9 LOOP
            IF starts_with(pattern, names[i]) THEN
                element := i;
                EXIT;
            END IF;
        END LOOP;
        IF element > 0 THEN
            pattern := substr(pattern, length(names[element]) + 1);
            number := substring(left_ FROM ('^[0-9]{1,' || digits[element] || '}'));
            IF number IS NULL OR number::integer < least_[element]
                    OR number::integer > most[element] THEN
                RETURN NULL;
            END IF;
            parts[places[element]] := number::integer;
            left_ := substr(left_, length(number) + 1);
        ELSIF strpos(punctuation, left(pattern, 1)) > 0 THEN
            pattern := substr(pattern, 2);
            IF strpos(punctuation, left(left_, 1)) > 0 THEN
                left_ := substr(left_, 2);
            END IF;
        ELSE
            RETURN NULL;
        END IF;
    END LOOP;
    IF parts[1] = 0 OR left_ <> '' OR parts[3] > 28 AND parts[3] > extract(day FROM
            make_date(parts[1], parts[2], 1) + interval '1 month' - interval '1 day') THEN
        RETURN NULL;
    END IF;
    RETURN make_timestamp(parts[1], parts[2], parts[3], parts[4], parts[5], parts[6]);
END $$;

CREATE FUNCTION QEL_TIME_OF(VALUE text) RETURNS timestamp
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN QEL_TIME_OF(VALUE, 'YYYY-MM-DD HH24:MI:SS');

-- As it stands in the tables; NULL outside of the years 1 to 9999.
CREATE FUNCTION QEL_TIME_TEXT(VALUE timestamp) RETURNS text
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
BEGIN
    IF VALUE < timestamp '0001-01-01' OR VALUE >= timestamp '10000-01-01' THEN
        RETURN NULL;
    END IF;
    RETURN to_char(VALUE, 'YYYY-MM-DD HH24:MI:SS') COLLATE "C";
END $$;

CREATE FUNCTION QEL_DATE(VALUE text, FORMAT text) RETURNS text
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
    result text := QEL_TIME_TEXT(QEL_TIME_OF(VALUE, FORMAT));
BEGIN
    IF result IS NULL THEN
        PERFORM QEL_REFUSE('“' || left(VALUE, 60) || '”不是日期');
    END IF;
    RETURN result;
END $$;

CREATE FUNCTION QEL_DATE(VALUE text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN QEL_DATE(VALUE, 'YYYY-MM-DD HH24:MI:SS');

-- Elements as above, YY, and "quoted text".
CREATE FUNCTION QEL_FORMAT_DATE(VALUE text, FORMAT text) RETURNS text
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
    names CONSTANT text[] := ARRAY['YYYY', 'YY', 'MM', 'DD', 'HH24', 'HH12', 'HH', 'MI', 'SS'];
    time_ timestamp := QEL_TIME_OF(VALUE);
    pattern text := upper(FORMAT COLLATE "C");
    rest text := FORMAT;
    written text := '';
    used text;
BEGIN
    WHILE time_ IS NOT NULL AND pattern <> '' LOOP
        used := NULL;
        FOR i IN 1 .. 9 LOOP
            IF starts_with(pattern, names[i]) THEN
                used := names[i];
                EXIT;
            END IF;
        END LOOP;
        IF used IS NOT NULL THEN
            written := written || to_char(time_, used);
        ELSIF left(pattern, 1) = '"' THEN
            used := substring(rest FROM '^"[^"]*"');
            IF used IS NULL THEN
                time_ := NULL;
            ELSE
                written := written || btrim(used, '"');
            END IF;
        ELSIF strpos('-/:.,; ', left(pattern, 1)) > 0 THEN
            used := left(pattern, 1);
            written := written || used;
        ELSE
            time_ := NULL;
        END IF;
        pattern := substr(pattern, length(used) + 1);
        rest := substr(rest, length(used) + 1);
    END LOOP;
    IF time_ IS NULL THEN
        PERFORM QEL_REFUSE('“' || left(FORMAT, 60) || '”不是可用的日期格式');
    END IF;
    RETURN nullif(written, '') COLLATE "C";
END $$;

-- To whole seconds.
CREATE FUNCTION QEL_ADD_DAYS(VALUE text, DAYS double precision) RETURNS text
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
    seconds double precision := DAYS * 86400;
    time_ timestamp := QEL_TIME_OF(VALUE);
    result text;
BEGIN
    IF time_ IS NOT NULL AND abs(DAYS) < 4e6 THEN
        seconds := trunc(seconds + 0.5 * sign(seconds));
        result := QEL_TIME_TEXT(time_ + make_interval(secs => seconds));
    END IF;
    IF result IS NULL THEN
        PERFORM QEL_REFUSE('“' || left(VALUE, 60) || '”不是可以加减天数的日期');
    END IF;
    RETURN result;
END $$;

CREATE FUNCTION QEL_DAYS_BETWEEN(LATER text, EARLIER text) RETURNS double precision
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
    time_ interval := QEL_TIME_OF(LATER) - QEL_TIME_OF(EARLIER);
BEGIN
    IF time_ IS NULL THEN
        PERFORM QEL_REFUSE('“' || left(LATER, 60) || '”不是日期');
    END IF;
    RETURN extract(epoch FROM time_)::double precision / 86400;
END $$;

-- To exactly so many characters: cut, or filled with blanks.
CREATE FUNCTION QEL_PAD(VALUE text, SIZE integer) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN rpad(VALUE, SIZE, ' ') COLLATE "C";

-- Whose token this is, for sessions that may not read SRV_TOKEN; whoever does not know the hash
-- learns nothing. In PL/pgSQL because that keeps the plan: each request asks, and planning takes ten
-- times as long as the look. Tables with their schema because it runs as their owner, whatever the
-- caller's search path.
CREATE FUNCTION QEL_OPERATOR(CODE text, HASH text, MOMENT text)
RETURNS TABLE (USER_ID text, USER_CODE text, USER_NAME text, ORG_ID text, ORG_ABBR text,
               ORG_NAME text, UNIONS text)
LANGUAGE plpgsql STABLE STRICT SECURITY DEFINER AS $$
BEGIN
    RETURN QUERY SELECT U.USER_ID::text, U.USER_CODE::text, U.USER_NAME::text, U.ORG_ID::text,
        O.ORG_ABBR::text, O.ORG_NAME::text, T.UNIONS::text
    FROM @SCHEMA@.SRV_TOKEN T JOIN @SCHEMA@.USR_USER U ON U.USER_CODE = T.USER_CODE
        LEFT JOIN @SCHEMA@.BAS_ORG O ON O.ORG_ID = U.ORG_ID
    WHERE T.USER_CODE = CODE AND T.TOKEN_HASH = HASH
        AND (T.EXPIRES IS NULL OR T.EXPIRES > MOMENT)
        AND U.ENABLE_FLAG = '1' AND U.LAST_OPERATE <> 'D';
END $$;

-- The key of a new row of a table with a key of one column. Counting begins beyond the largest key
-- that the table holds by then, and not below what SRV_SEQUENCE says. No transaction waits for
-- another one's key, and what is rolled back leaves a gap. A sequence below 1 has not begun.
CREATE FUNCTION SRV_NEW_KEY(COUNTED text) RETURNS bigint
LANGUAGE plpgsql VOLATILE STRICT AS $$
DECLARE
    series text := 'srv_key_' || lower(COUNTED);
    given bigint := nextval(series);
    key_column text;
    first bigint;
BEGIN
    IF given > 0 THEN
        RETURN given;
    END IF;
    PERFORM pg_advisory_xact_lock(hashtext(series));
    EXECUTE 'SELECT last_value FROM ' || series INTO given;
    IF given < 1 THEN
        SELECT a.attname INTO key_column
        FROM pg_index i JOIN pg_attribute a ON a.attrelid = i.indrelid AND a.attnum = i.indkey[0]
        WHERE i.indrelid = COUNTED::regclass AND i.indisprimary;
        EXECUTE format('SELECT greatest(max(CASE WHEN %1$I ~ ''^[0-9]{1,18}$'' THEN %1$I::bigint END)'
                       ' + 1, (SELECT next FROM srv_sequence WHERE name = $1), 1) FROM %2$s',
                       key_column, COUNTED)
        INTO first USING COUNTED;
        PERFORM setval(series, first, false);
    END IF;
    RETURN nextval(series);
END $$;

REVOKE EXECUTE ON FUNCTION SRV_NEW_KEY(text) FROM PUBLIC;
