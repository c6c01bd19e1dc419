-- Who may open a workspace. An empty hash is an empty password.
CREATE TABLE Accounts (
  Name TEXT(20) COLLATE JET PRIMARY KEY,
  Salt TEXT(32),
  PasswordHash TEXT(64)
);
INSERT INTO Accounts VALUES ('Admin', '', '');
