INSERT INTO Items VALUES(1,'Timer','TimerText123');
INSERT INTO Messages VALUES(1,99,'exported');
INSERT INTO Items VALUES(2,'Timer','TimerText12345');
INSERT INTO Messages VALUES(2,99,'not exported');
INSERT INTO Items VALUES(3,'IO','ANIN_1234');
INSERT INTO Messages VALUES(3,99,'exported');
INSERT INTO Items VALUES(4,'IO','IN_54321');
INSERT INTO Messages VALUES(4,99,'not exported');
