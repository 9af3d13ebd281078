create table region (name text, manager text, opened text, target real);
