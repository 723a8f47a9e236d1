-- json_value reads the one scalar its path names straight from the text
-- where it can, and the whole tree otherwise; the answers must not tell
-- which.  Each row: an id, then what the call gives.
select 'repeated-first-wins', json_value('{"a":1,"a":2}', '$.a');
select 'repeated-object-first', json_value('{"a":{"b":1},"a":{"b":2}}', '$.a.b');
select 'repeated-scalar-first', json_value('{"a":1,"a":{"b":2}}', '$.a.b');
select 'repeated-array-first', json_value('{"a":[{"b":1}],"a":{"b":2}}', '$.a.b');
select 'escaped-name-first', json_value('{"\u0061":1,"a":2}', '$.a');
select 'lax-name-first', json_value('{a:1,"a":2}', '$.a');
select 'lax-number', json_value('{"a":+007}', '$.a');
select 'lax-skipped', json_value('{"x":[''}'',],"a":"y",}', '$.a');
select 'member-on-array', json_value('[{"a":1}]', '$.a');
select 'subscript-on-scalar', json_value('{"a":"s"}', '$.a[0]');
select 'past-the-end', json_value('[1]', '$[1]') is null;
select 'invalid-after-match', json_value('{"a":1,"b":}', '$.a') is null;
select 'invalid-after-match-error', json_value('{"a":1,"b":}', '$.a', NULL, NULL, 'error on error');
select 'invalid-default', json_value('{"a":1', '$.a', NULL, NULL, 'default on error', 'D');
select 'number', json_value('{"a":{"b":"12.345"}}', '$.a.b', 'number(10,2)');
select 'number-integer', typeof(json_value('{"a":[5]}', '$.a[0]', 'number'));
select 'date', json_value('{"d":"2024-02-29"}', '$.d', 'date');
select 'too-long-error', json_value('{"a":"abc"}', '$.a', 'varchar(2)', NULL, 'error on error');
select 'too-long-default', json_value('{"a":"abc"}', '$.a', 'varchar(2)', NULL, 'default on error', 'D');
select 'json-null', json_value('{"a":null}', '$.a') is null;
select 'escapes', json_value('{"a":"\"\u00e9\\"}', '$.a');
-- rows of one statement take either way as each needs
create table t(j text);
insert into t values ('{"a":{"b":1}}'), ('{"a":{"b":1},"a":{"b":2}}'), ('{"a":[{"b":3}]}'),
  ('{a:{"b":4}}'), ('{"a":{"b":5}'), ('{"a":{"c":0,"b":"six"}}');
select 'rows', rowid, json_value(j, '$.a.b') from t order by rowid;
