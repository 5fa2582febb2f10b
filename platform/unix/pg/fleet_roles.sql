-- Roles and row-level security for a configuration store shared by a
-- fleet: each host's role reads and writes its own host's tree only, and
-- members of korvo_admin the whole fleet. The library works unchanged
-- under either; a call of a host's role on another host's tree fails with
-- "access denied" and changes nothing.
--
-- Run it as the owner of the store's tables (the role whose first write
-- made them) or a superuser, once the store exists, and again after an
-- upgrade (it can be run any number of times):
--   psql "postgresql://owner@server/korvo" -f fleet_roles.sql
-- Then, for each host, a login role and the host it stands for:
--   CREATE ROLE web01 LOGIN PASSWORD '...' IN ROLE korvo_hosts;
--   INSERT INTO korvo.host_roles VALUES ('web01', 'web01');
-- and for the people who manage the fleet:
--   CREATE ROLE ops LOGIN PASSWORD '...' IN ROLE korvo_admin;
-- Host names are kept in lower case. The owner itself is not subject to
-- the policies.
DO $$
BEGIN
  IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'korvo_admin') THEN
    CREATE ROLE korvo_admin NOLOGIN;
  END IF;
  IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'korvo_hosts') THEN
    CREATE ROLE korvo_hosts NOLOGIN;
  END IF;
END
$$;

GRANT USAGE ON SCHEMA korvo TO korvo_admin, korvo_hosts;
GRANT SELECT, INSERT, UPDATE, DELETE ON korvo.keys, korvo.vals TO korvo_admin, korvo_hosts;
GRANT SELECT ON korvo.meta, korvo.host_roles TO korvo_admin, korvo_hosts;
GRANT INSERT, UPDATE, DELETE ON korvo.host_roles TO korvo_admin;

ALTER TABLE korvo.keys ENABLE ROW LEVEL SECURITY;
ALTER TABLE korvo.vals ENABLE ROW LEVEL SECURITY;

DROP POLICY IF EXISTS fleet ON korvo.keys;
DROP POLICY IF EXISTS fleet ON korvo.vals;
DROP POLICY IF EXISTS own_host ON korvo.keys;
DROP POLICY IF EXISTS own_host ON korvo.vals;

CREATE POLICY fleet ON korvo.keys TO korvo_admin USING (true) WITH CHECK (true);
CREATE POLICY fleet ON korvo.vals TO korvo_admin USING (true) WITH CHECK (true);

-- A row belongs to a host's role when its host is the one host_roles names
-- for the role; the foreign keys (which carry the host) keep every value
-- and subkey on its key's host.
CREATE POLICY own_host ON korvo.keys TO korvo_hosts
  USING (host = (SELECT r.host FROM korvo.host_roles r WHERE r.role = current_user))
  WITH CHECK (host = (SELECT r.host FROM korvo.host_roles r WHERE r.role = current_user));
CREATE POLICY own_host ON korvo.vals TO korvo_hosts
  USING (host = (SELECT r.host FROM korvo.host_roles r WHERE r.role = current_user))
  WITH CHECK (host = (SELECT r.host FROM korvo.host_roles r WHERE r.role = current_user));
