-- vxjson_check(doc [, dialect]) and vxjson_format(doc [, layout]).
-- Each row: an id, then what the call gives.
select 'check-object', vxjson_check('{"a":[1,2.5,"x",true,null]}');
select 'check-truncated', vxjson_check('{"a":');
-- lax reading takes a trailing comma, strict reading does not
select 'check-trailing-comma', vxjson_check('[1,2,]');
select 'check-trailing-comma-pg', vxjson_check('[1,2,]', 'pg');
select 'check-empty', vxjson_check('');
select 'check-blanks', vxjson_check('   ');
-- the standard dialect reads lax text: quoted by ' and bare names
select 'check-lax-standard', vxjson_check('{a:''x''}');
select 'check-lax-pg', vxjson_check('{a:''x''}', 'pg');
select 'check-lax-mysql', vxjson_check('{a:''x''}', 'MySQL');
-- a scalar document is a whole document only in the compatible dialects
select 'check-scalar-standard', vxjson_check('1');
select 'check-scalar-pg', vxjson_check('1', 'pg');
select 'check-scalar-mysql', vxjson_check('"s"', 'mysql');
select 'check-standard-named', vxjson_check('[1]', 'standard');
select 'check-null-doc', vxjson_check(NULL) is null;
select 'check-null-dialect', vxjson_check('[1]', NULL) is null;
select 'check-integer-arg', vxjson_check(12, 'pg');
select 'check-bad-dialect', vxjson_check('[1]', 'oracle');
select 'format-compact', vxjson_format('{ "a" : [ 1 , 2 ] , "b" : { } }');
select 'format-lax-to-strict', vxjson_format('{a:''it is'', b:[true,null]}');
select 'format-escapes', vxjson_format('["tab\there", "quote\"", "\u00e9"]');
select 'format-scalar', vxjson_format('"just a string"');
select 'format-decimal-as-written', vxjson_format('[1.50E+3, -0.0]');
select 'format-pretty', vxjson_format('{"a":1,"b":[1,{"c":null}],"d":{},"e":[]}', 'pretty');
select 'format-compact-named', vxjson_format('[ 1 ]', 'COMPACT');
select 'format-null', vxjson_format(NULL) is null;
select 'format-bad-layout', vxjson_format('[1]', 'wide');
select 'format-invalid', vxjson_format('[1,');
select 'format-unterminated', vxjson_format('{"a":"b}');
select 'format-empty', vxjson_format('');
-- a column of documents: the bad row stops the statement with its error
create table docs(id integer primary key, j text);
insert into docs values (1, '{"k":1}'), (2, NULL), (3, '[true]');
select 'column', id, vxjson_check(j), vxjson_format(j) from docs order by id;
select 'column-valid-count', count(*) from docs where vxjson_check(j);
select 'format-is-json', json_object('doc', vxjson_format('{ "a" : 1 }'));
