-- What a superuser does once in each database of the application server, before or after its
-- tables are made, and again after an extension was added:
--
--     psql -v ON_ERROR_STOP=1 -v owner=qel -d qel -f qel-reader.sql
--
-- OWNER is the role that the server logs in as. Queries of clients run as qel_reader, which may
-- read the tables of the platform. PostgreSQL lets everybody call nearly all of its functions, and
-- with them, even in a read-only transaction, lift the time-out, put the role off, end other
-- sessions, sleep or hold locks. Here everything that has an effect beside its result is taken
-- from all roles but the owner.

SELECT 'CREATE ROLE qel_reader NOLOGIN'
WHERE NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'qel_reader') \gexec
GRANT qel_reader TO :"owner";

SELECT format('REVOKE EXECUTE ON %s %s FROM PUBLIC; GRANT EXECUTE ON %1$s %2$s TO %I',
              CASE prokind WHEN 'p' THEN 'PROCEDURE' ELSE 'FUNCTION' END, p.oid::regprocedure,
              :'owner')
FROM pg_proc p
WHERE provolatile = 'v' AND prokind IN ('f', 'p')
    AND prorettype NOT IN ('trigger'::regtype, 'event_trigger'::regtype)
    AND proowner <> :'owner'::regrole
    -- not those that only superusers may call anyway: the owner shall not get them
    AND has_function_privilege('public', p.oid, 'EXECUTE') \gexec

-- How far a copy of the database has come, which a reading session asks before it reads.
GRANT EXECUTE ON FUNCTION pg_last_wal_replay_lsn() TO qel_reader;

-- Nothing is stored beside the tables, and no query fills the disk.
SELECT format('REVOKE TEMPORARY ON DATABASE %I FROM PUBLIC', current_database()) \gexec
SELECT format('ALTER DATABASE %I SET temp_file_limit = ''8GB''', current_database()) \gexec
