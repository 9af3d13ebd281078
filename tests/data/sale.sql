create table sale (id integer, region text, product text, price real, quantity integer, day text, at text,
                   returned integer, note text, rank integer);
