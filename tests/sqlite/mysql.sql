-- MySQL-compatible functions.  Each row: an id, then what the call gives.
-- mysql_json_contains(target, candidate)
select 'contains-member', mysql_json_contains('{"a":1,"b":2}', '{"a":1}');
select 'contains-member-differs', mysql_json_contains('{"a":1,"b":2}', '{"a":2}');
select 'contains-element', mysql_json_contains('[1,2,3]', '2');
select 'contains-elements', mysql_json_contains('[1,2,3]', '[3,1]');
select 'contains-scalar-in-object', mysql_json_contains('{"a":1}', '1');
select 'contains-string', mysql_json_contains('"abc"', '"abc"');
select 'contains-null', mysql_json_contains(NULL, '1') is null;
select 'contains-lax-refused', mysql_json_contains('{a:1}', '1');
-- mysql_json_overlaps(a, b)
select 'overlaps-arrays', mysql_json_overlaps('[1,3,5]', '[2,5,7]');
select 'overlaps-disjoint', mysql_json_overlaps('[1,3]', '[2,4]');
select 'overlaps-member', mysql_json_overlaps('{"a":1,"b":10}', '{"a":5,"b":10}');
select 'overlaps-no-member', mysql_json_overlaps('{"a":1}', '{"a":2}');
select 'overlaps-array-scalar', mysql_json_overlaps('[4,5,6,7]', '6');
select 'overlaps-null', mysql_json_overlaps('[1]', NULL) is null;
-- mysql_json_merge_patch(doc, doc, ...)
select 'patch-remove-and-add', mysql_json_merge_patch('{"a":1,"b":2}', '{"b":null,"c":3}');
select 'patch-array-replaces', mysql_json_merge_patch('[1,2]', '[3]');
select 'patch-nested', mysql_json_merge_patch('{"a":{"x":1}}', '{"a":{"y":2}}');
-- a scalar target is replaced by the patch as it stands, its nulls included
select 'patch-scalar-target', mysql_json_merge_patch('1', '{"a":null,"b":1}');
select 'patch-three', mysql_json_merge_patch('{"a":1}', '{"b":2}', '{"a":null}');
select 'patch-member-order', mysql_json_merge_patch('{"bb":1}', '{"a":2}');
select 'patch-escapes', mysql_json_merge_patch('{}', '{"s":"line\nnext \"q\""}');
select 'patch-null', mysql_json_merge_patch('{}', NULL, '{}') is null;
select 'patch-one-document', mysql_json_merge_patch('{}');
select 'patch-bad-third', mysql_json_merge_patch('{}', '{}', '[1,]');
-- mysql_json_merge_preserve(doc, doc, ...)
select 'preserve-arrays', mysql_json_merge_preserve('[1,2]', '[2,3]');
select 'preserve-same-member', mysql_json_merge_preserve('{"a":1}', '{"a":2}');
select 'preserve-scalars', mysql_json_merge_preserve('1', 'true');
select 'preserve-object-array', mysql_json_merge_preserve('{"a":1}', '[2]');
select 'preserve-three', mysql_json_merge_preserve('[1]', '{"a":2}', '3');
select 'preserve-nested', mysql_json_merge_preserve('{"a":{"x":[1]}}', '{"a":{"x":2,"y":3}}');
select 'preserve-null', mysql_json_merge_preserve(NULL, '[1]') is null;
