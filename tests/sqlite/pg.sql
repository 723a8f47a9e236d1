-- PostgreSQL-compatible functions.  Each row: an id, then what the call gives.
-- jsonb_contains(a, b): a @> b
select 'contains-sub-object', jsonb_contains('{"a":1,"b":[1,2,3]}', '{"b":[3,1]}');
select 'contains-extra-member', jsonb_contains('{"a":1}', '{"a":1,"b":2}');
select 'contains-nested-array', jsonb_contains('[1,[2,3]]', '[[3]]');
select 'contains-empty-object', jsonb_contains('{"a":{"b":1}}', '{"a":{}}');
select 'contains-scalar-equal', jsonb_contains('"foo"', '"foo"');
select 'contains-scalar-differs', jsonb_contains('"foo"', '"bar"');
select 'contains-array-in-object', jsonb_contains('{"a":[1,2]}', '[1]');
select 'contains-null-first', jsonb_contains(NULL, '{}') is null;
select 'contains-null-second', jsonb_contains('{}', NULL) is null;
select 'contains-bad-second', jsonb_contains('{}', '{"a"}');
-- jsonb_concat(a, b): a || b
select 'concat-arrays', jsonb_concat('[1,2]', '[3]');
select 'concat-objects', jsonb_concat('{"a":1,"c":0}', '{"a":2,"b":3}');
select 'concat-array-object', jsonb_concat('[1]', '{"a":1}');
select 'concat-object-array', jsonb_concat('{"a":1}', '[1]');
select 'concat-scalars', jsonb_concat('1', '"x"');
select 'concat-scalar-array', jsonb_concat('1', '[2]');
select 'concat-object-scalar', jsonb_concat('{"a":1}', '1');
select 'concat-scalar-object', jsonb_concat('true', '{"a":1}');
select 'concat-null', jsonb_concat('[1]', NULL) is null;
select 'concat-lax-refused', jsonb_concat('[1]', '[a]');
-- documents are read as jsonb keeps them: the last repeated name wins,
-- members sorted with shorter names first
select 'concat-repeated-name', jsonb_concat('{"a":1,"a":2}', '{}');
select 'concat-member-order', jsonb_concat('{"bb":1,"c":2}', '{"a":3}');
-- jsonb_strip_nulls(a)
select 'strip-nested', jsonb_strip_nulls('{"a":null,"b":{"c":null,"d":1},"e":[null,{"f":null}]}');
select 'strip-null-document', jsonb_strip_nulls('null');
select 'strip-array-keeps-nulls', jsonb_strip_nulls('[null,1]');
select 'strip-sql-null', jsonb_strip_nulls(NULL) is null;
select 'strip-invalid', jsonb_strip_nulls('{"a":nul}');
-- results are marked as JSON, so SQLite's own JSON functions embed them
select 'result-is-json', json_array(jsonb_concat('[1]', '[2]'), jsonb_strip_nulls('{"a":null}'));
select 'plain-text-is-string', json_array('[1]');
