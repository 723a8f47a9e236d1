-- PostgreSQL-compatible jsonb_path_query.  Each row: an id, then what the
-- call gives.
-- jsonb_path_query(doc, path)
select 'path-query-elements', jsonb_path_query('{"a":[1,2,3]}', '$.a[*]');
select 'path-query-member', jsonb_path_query('{"a":{"b":"x"}}', '$.a.b');
select 'path-query-object', jsonb_path_query('{"a":{"b":"x"}}', '$.a');
select 'path-query-last-repeated', jsonb_path_query('{"a":1,"a":2}', '$.a');
select 'path-query-missing', jsonb_path_query('{"a":1}', '$.b') is null;
select 'path-query-bad-path', jsonb_path_query('{"a":1}', 'a');
select 'path-query-null', jsonb_path_query(NULL, '$') is null;
select 'path-query-is-json', json_array(jsonb_path_query('{"a":[1,2]}', '$.a'));
-- the path is compiled once and serves every row
create table t(j text);
insert into t values ('{"a":[1,2]}'), ('{"a":[]}'), ('{"b":0}');
select 'rows', rowid, jsonb_path_query(j, '$.a[0]') from t order by rowid;
