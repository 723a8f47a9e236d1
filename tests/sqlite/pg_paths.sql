-- PostgreSQL-compatible functions with a key or a path.  Each row: an id,
-- then what the call gives.
-- jsonb_delete(doc, key | position)
select 'delete-key', jsonb_delete('{"a":1,"b":2}', 'a');
select 'delete-repeated-key', jsonb_delete('{"a":1,"a":2,"b":3}', 'a');
select 'delete-missing-key', jsonb_delete('{"a":1}', 'x');
select 'delete-last-element', jsonb_delete('[1,2,3]', -1);
select 'delete-first-element', jsonb_delete('[1,2,3]', 0);
select 'delete-out-of-range', jsonb_delete('[1,2,3]', 5);
select 'delete-before-the-start', jsonb_delete('[1,2,3]', -4);
select 'delete-position-in-object', jsonb_delete('{"a":1}', 0);
select 'delete-null', jsonb_delete('{"a":1}', NULL) is null;
select 'delete-is-json', json_array(jsonb_delete('{"a":1,"b":2}', 'b'));
-- jsonb_path_query(doc, path)
select 'path-query-elements', jsonb_path_query('{"a":[1,2,3]}', '$.a[*]');
select 'path-query-member', jsonb_path_query('{"a":{"b":"x"}}', '$.a.b');
select 'path-query-object', jsonb_path_query('{"a":{"b":"x"}}', '$.a');
select 'path-query-last-repeated', jsonb_path_query('{"a":1,"a":2}', '$.a');
select 'path-query-missing', jsonb_path_query('{"a":1}', '$.b') is null;
select 'path-query-bad-path', jsonb_path_query('{"a":1}', 'a');
select 'path-query-null', jsonb_path_query(NULL, '$') is null;
-- the path is compiled once and serves every row
create table t(j text);
insert into t values ('{"a":[1,2]}'), ('{"a":[]}'), ('{"b":0}');
select 'rows', rowid, jsonb_path_query(j, '$.a[0]'), jsonb_delete(j, 'a') from t order by rowid;
