-- json_exists(doc, path [, on_error]).  Each row: an id, then what the call gives.
select 'exists-member', json_exists('{"a":1}', '$.a');
select 'exists-missing', json_exists('{"a":1}', '$.b');
select 'exists-out-of-range', json_exists('[1,2]', '$[5]');
select 'exists-null-value', json_exists('{"a":null}', '$.a');
select 'exists-bad-document', json_exists('{"a":', '$.a');
select 'exists-bad-document-error', json_exists('{"a":', '$.a', 'error on error');
select 'exists-bad-document-unknown', json_exists('{"a":', '$.a', 'unknown on error') is null;
select 'exists-bad-document-true', json_exists('{"a":', '$.a', 'true on error');
select 'exists-bad-path', json_exists('{}', '$.');
select 'exists-null', json_exists(NULL, '$') is null;
select 'exists-bad-on-error', json_exists('{}', '$', 'zero on error');
select 'exists-subscripts', json_exists('[1,2,3]', '$[1 to 5]');
select 'exists-lax-document', json_exists('{a:1}', '$.a');
-- the path is compiled once per statement and serves every row
create table t(j text);
insert into t values ('{"n":1,"s":"a"}'), ('{"n":"x"}'), (NULL), ('[');
select 'column', rowid, json_exists(j, '$.s'), json_exists(j, '$.n', 'unknown on error') from t order by rowid;
-- a path from a column: compiled for each row
create table p(path text);
insert into p values ('$.a'), ('$.b[0]'), ('$.c');
select 'path-column', path, json_exists('{"a":1,"b":[2]}', path) from p order by rowid;
