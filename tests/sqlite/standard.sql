-- json_value, json_query and json_exists.  Each row: an id, then what the
-- call gives; typeof() shows the SQL type where it matters.
-- json_value: scalars as text by default
select 'value-string', json_value('{"a":"x"}', '$.a');
select 'value-decimal-as-written', json_value('{"a":12.50}', '$.a');
select 'value-boolean', json_value('{"a":true}', '$.a');
select 'value-escapes-decoded', json_value('{"a":"x\"y\u00e9"}', '$.a');
select 'value-json-null', json_value('{"a":null}', '$.a') is null;
select 'value-empty-string', json_value('{"a":""}', '$.a') is null;
select 'value-lax-document', json_value('{a:''q''}', '$.a');
select 'value-subscript', json_value('[10,20,30]', '$[1]');
select 'value-nested', json_value('{"a":[{"b":1},{"b":2}]}', '$.a[1].b');
select 'value-quoted-member', json_value('{"a b":7}', '$."a b"');
select 'value-null-document', json_value(NULL, '$.a') is null;
select 'value-null-path', json_value('{}', NULL) is null;
-- shapes JSON_VALUE refuses: NULL by default, the code under ERROR ON ERROR
select 'value-object', json_value('{"a":{"b":1}}', '$.a') is null;
select 'value-object-error', json_value('{"a":{"b":1}}', '$.a', NULL, NULL, 'error on error');
select 'value-array-error', json_value('{"a":[1]}', '$.a', '', '', 'ERROR ON ERROR');
select 'value-several-error', json_value('[1,2]', '$[*]', NULL, NULL, 'error on error');
select 'value-range-error', json_value('[1,2,3]', '$[1 to 2]', NULL, NULL, 'error on error');
-- no match: ON EMPTY, which when left out hands over to ON ERROR
select 'value-missing', json_value('{"a":1}', '$.b') is null;
select 'value-missing-error-on-error', json_value('{"a":1}', '$.b', NULL, NULL, 'error on error');
select 'value-missing-null-on-empty', json_value('{"a":1}', '$.b', NULL, 'null on empty', 'error on error') is null;
select 'value-missing-error-on-empty', json_value('{"a":1}', '$.b', NULL, 'error on empty');
select 'value-default-on-empty', json_value('{"a":1}', '$.b', NULL, 'default on empty', NULL, 'none');
select 'value-default-on-error', json_value('{"a":[1]}', '$.a', NULL, NULL, 'default on error', -1);
select 'value-two-defaults-empty', json_value('{"a":[1]}', '$.b', NULL, 'default on empty', 'default on error', 'E', 'R');
select 'value-two-defaults-error', json_value('{"a":[1]}', '$.a', NULL, 'default on empty', 'default on error', 'E', 'R');
select 'value-default-typed', typeof(json_value('{}', '$.b', NULL, 'default on empty', NULL, 2.5));
select 'value-default-missing', json_value('{}', '$.b', NULL, 'default on empty');
select 'value-default-extra', json_value('{}', '$.b', NULL, NULL, NULL, 1);
-- RETURNING
select 'value-number-integer', json_value('{"a":12}', '$.a', 'number'), typeof(json_value('{"a":12}', '$.a', 'number'));
select 'value-number-from-string', json_value('{"a":"12.5"}', '$.a', 'NUMBER'), typeof(json_value('{"a":"12.5"}', '$.a', 'number'));
select 'value-number-scaled', json_value('{"a":1.005}', '$.a', 'number(10,2)');
select 'value-number-too-wide', json_value('{"a":12345.6}', '$.a', 'number(4,1)', NULL, 'error on error');
select 'value-number-too-wide-null', json_value('{"a":12345.6}', '$.a', 'number(4,1)') is null;
select 'value-number-not-a-number', json_value('{"a":"x"}', '$.a', 'number', NULL, 'error on error');
select 'value-number-boolean', json_value('{"a":true}', '$.a', 'decimal(5)');
select 'value-date', json_value('{"d":"2024-02-29T13:05:09Z"}', '$.d', 'date');
select 'value-timestamp', json_value('{"d":"2024-02-29 13:05:09.25"}', '$.d', 'timestamp');
select 'value-date-not-a-date', json_value('{"d":"soon"}', '$.d', 'date', NULL, 'error on error');
select 'value-varchar-fits', json_value('{"a":"abc"}', '$.a', 'varchar(3)');
select 'value-varchar-too-long', json_value('{"a":"abcd"}', '$.a', 'varchar(3)', NULL, 'error on error');
select 'value-varchar-too-long-null', json_value('{"a":"abcd"}', '$.a', 'varchar2(3)') is null;
-- documents that cannot be read are errors for ON ERROR; bad paths and clauses always fail
select 'value-bad-document', json_value('{"a":', '$.a') is null;
select 'value-bad-document-error', json_value('{"a":', '$.a', NULL, NULL, 'error on error');
select 'value-bad-path', json_value('{}', '$a');
select 'value-bad-subscripts', json_value('[1,2,3]', '$[2 to 1]');
select 'value-bad-returning', json_value('{}', '$.a', 'float');
select 'value-bad-precision', json_value('{}', '$.a', 'number(40)');
select 'value-bad-on-empty', json_value('{}', '$.a', NULL, 'null on error');
select 'value-bad-on-error', json_value('{}', '$.a', NULL, NULL, 'zero on error');
-- json_query: JSON text, wrappers
select 'query-object', json_query('{"a":{"b":[1,2]}}', '$.a');
select 'query-array', json_query('{"a":[1,"x"]}', '$.a');
select 'query-escapes-kept', json_query('{"a":["x\ny"]}', '$.a');
select 'query-scalar', json_query('{"a":1}', '$.a') is null;
select 'query-scalar-error', json_query('{"a":1}', '$.a', NULL, NULL, 'error on error');
select 'query-scalar-empty', json_query('{"a":1}', '$.a', NULL, NULL, 'empty array on error');
select 'query-scalar-wrapped', json_query('{"a":5}', '$.a', 'with wrapper');
select 'query-scalar-conditional', json_query('{"a":5}', '$.a', 'with conditional array wrapper');
select 'query-object-conditional', json_query('{"a":{"b":1}}', '$.a', 'with conditional wrapper');
select 'query-object-unconditional', json_query('{"a":{"b":1}}', '$.a', 'with unconditional wrapper');
select 'query-several-wrapped', json_query('[1,2,3]', '$[*]', 'with array wrapper');
select 'query-several-conditional', json_query('[1,2,3]', '$[0 to 1]', 'with conditional wrapper');
select 'query-several-without', json_query('[1,2,3]', '$[*]', 'without array wrapper', NULL, 'error on error');
select 'query-missing', json_query('{}', '$.a') is null;
select 'query-missing-error', json_query('{}', '$.a', NULL, 'error on empty');
select 'query-missing-default', json_query('{}', '$.a', NULL, 'default on empty', NULL, '[]');
select 'query-is-json', json_array(json_query('{"a":{"b":1}}', '$.a'));
select 'query-bad-wrapper', json_query('{}', '$', 'with some wrapper');
select 'query-null', json_query(NULL, '$') is null;
-- json_exists
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
-- the clauses and the path are read once per statement, for every row
create table t(j text);
insert into t values ('{"n":1,"s":"a"}'), ('{"n":"x"}'), ('{"s":"c"}'), (NULL), ('[');
select 'column', rowid, json_value(j, '$.n', 'number', 'default on empty', 'default on error', -1, -2),
       json_query(j, '$.s', 'with wrapper'), json_exists(j, '$.s') from t order by rowid;
-- a path from a column: compiled for each row
create table p(path text);
insert into p values ('$.a'), ('$.b[0]'), ('$.c');
select 'path-column', path, json_value('{"a":1,"b":[2],"c":{}}', path) from p order by rowid;
