-- MySQL-compatible functions with paths.  Each row: an id, then what the call gives.
-- mysql_json_extract(doc, path [, path ...])
select 'extract-member', mysql_json_extract('{"a":[1,2,{"b":3}]}', '$.a[2].b');
select 'extract-string-is-json', mysql_json_extract('{"a":"x"}', '$.a');
select 'extract-all-elements', mysql_json_extract('{"a":[1,2]}', '$.a[*]');
select 'extract-two-paths', mysql_json_extract('{"a":1,"b":2}', '$.a', '$.b');
select 'extract-one-of-two-paths', mysql_json_extract('{"a":1}', '$.x', '$.a');
select 'extract-missing', mysql_json_extract('{"a":1}', '$.x') is null;
select 'extract-null-path', mysql_json_extract('{"a":1}', NULL) is null;
select 'extract-list-refused', mysql_json_extract('[1,2,3]', '$[0,1]');
select 'extract-bad-path', mysql_json_extract('[1]', '$[');
select 'extract-no-path', mysql_json_extract('[1]');
-- mysql_json_contains(target, candidate, path)
select 'contains-at-path', mysql_json_contains('{"a":{"b":[1,2]}}', '[2]', '$.a.b');
select 'contains-at-missing-path', mysql_json_contains('{"a":1}', '1', '$.x') is null;
select 'contains-at-wildcard', mysql_json_contains('{"a":1}', '1', '$.*');
-- mysql_json_contains_path(doc, 'one' | 'all', path ...)
select 'contains-path-one', mysql_json_contains_path('{"a":1,"b":{"c":2}}', 'one', '$.x', '$.a');
select 'contains-path-all-missing', mysql_json_contains_path('{"a":1,"b":{"c":2}}', 'all', '$.a', '$.x');
select 'contains-path-all', mysql_json_contains_path('{"a":1,"b":{"c":2}}', 'ALL', '$.a', '$.b.c');
select 'contains-path-wildcard', mysql_json_contains_path('{"a":[1,2]}', 'one', '$.a[*]');
select 'contains-path-bad-mode', mysql_json_contains_path('{}', 'some', '$');
select 'contains-path-null-mode', mysql_json_contains_path('{}', NULL, '$') is null;
-- the paths are compiled once per statement and serve every row
create table t(j text);
insert into t values ('{"a":[1,2]}'), ('{"a":3}'), ('{"b":0}');
select 'rows', rowid, mysql_json_extract(j, '$.a[0]'), mysql_json_contains_path(j, 'one', '$.b', '$.a') from t order by rowid;
