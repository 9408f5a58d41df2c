# Keeps books and loans in an SQLite database: transactions, constraints, a function of its own, aggregates.
import sqlite3

database = sqlite3.connect(":memory:")
database.row_factory = sqlite3.Row
database.executescript("""
    create table book (id integer primary key, title text not null unique, year integer);
    create table loan (book integer references book, reader text, days integer);
""")

books = [("A History of Bridges", 1967), ("Knots", 1944), ("The Lighthouse Keeper", 2001)]
with database:
    database.executemany("insert into book (title, year) values (?, ?)", books)
    database.executemany("insert into loan values (?, ?, ?)", [(1, "Ada", 14), (1, "Grace", 3), (3, "Ada", 21)])

try:
    with database:
        database.execute("insert into loan values (2, 'Alan', 7)")
        database.execute("insert into book (title) values ('Knots')")
except sqlite3.IntegrityError as error:
    print("refused:", error)
assert database.execute("select count(*) from loan").fetchone()[0] == 3, "the transaction was rolled back"

database.create_function("initials", 1, lambda title: "".join(word[0] for word in title.split()))


class Longest:
    def __init__(self):
        self.days = 0

    def step(self, days):
        self.days = max(self.days, days or 0)

    def finalize(self):
        return self.days


database.create_aggregate("longest", 1, Longest)
query = """
    select title, initials(title) as short, count(reader) as loans, longest(days) as days
    from book left join loan on book.id = loan.book group by book.id order by loans desc, title
"""
rows = [dict(row) for row in database.execute(query)]
for row in rows:
    print("{title:24} {short:4} {loans} loans, at most {days} days".format(**row))
assert [row["loans"] for row in rows] == [2, 1, 0]
