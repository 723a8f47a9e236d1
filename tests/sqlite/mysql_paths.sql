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
-- mysql_json_set / insert / replace: values are SQL values
select 'set-replace-and-add', mysql_json_set('{"a":1}', '$.a', 10, '$.c', '[true]');
select 'set-json-value', mysql_json_set('{"a":1}', '$.c', json('[true]'));
select 'set-own-json-value', mysql_json_set('{"a":1}', '$.c', jsonb_concat('[1]', '[2]'));
select 'set-null-and-real', mysql_json_set('{"a":1}', '$.a', NULL, '$.b', 1.5);
select 'set-escapes', mysql_json_set('{}', '$.s', 'a"b');
select 'set-past-the-end', mysql_json_set('[1,2]', '$[5]', 3);
select 'set-wildcard', mysql_json_set('{"a":1}', '$.*', 1);
select 'set-odd-arguments', mysql_json_set('{}', '$.a');
select 'set-null-path', mysql_json_set('{}', NULL, 1) is null;
select 'insert-only-missing', mysql_json_insert('{"a":1}', '$.a', 10, '$.b', 2);
select 'replace-only-present', mysql_json_replace('{"a":1}', '$.a', 10, '$.b', 2);
-- mysql_json_remove(doc, path ...)
select 'remove-two', mysql_json_remove('{"a":1,"b":[1,2,3]}', '$.a', '$.b[0]');
select 'remove-in-turn', mysql_json_remove('[1,2,3]', '$[0]', '$[0]');
select 'remove-missing', mysql_json_remove('{"a":1}', '$.x');
select 'remove-whole-document', mysql_json_remove('{"a":1}', '$');
-- mysql_json_array_append / mysql_json_array_insert
select 'append-to-array', mysql_json_array_append('[1,2]', '$', 3);
select 'append-to-scalar', mysql_json_array_append('{"a":1}', '$.a', 2);
select 'append-twice', mysql_json_array_append('{"a":[1]}', '$.a', 'x', '$.a', 2);
select 'insert-before', mysql_json_array_insert('[1,2]', '$[1]', 'x');
select 'insert-past-the-end', mysql_json_array_insert('[1,2]', '$[9]', 'x');
-- paths of array insert are not reused: every row inserts at its own position 9
create table t(j text);
insert into t values ('[1]'), ('[1,2]'), ('[]');
select 'insert-rows', rowid, mysql_json_array_insert(j, '$[9]', 0), mysql_json_array_insert(j, '$[0]', 0) from t order by rowid;
