"""Who stands in the sample phone books. Numbers are from ranges kept free for fiction."""

# First names and last names that go together; every list serves one script.
FOLK = [
    (["Anna", "Ben", "Clara", "David", "Emma", "Finn", "Greta", "Hannes", "Ida", "Jonas",
      "Käthe", "Lukas", "Mia", "Noah", "Paula", "Ute"],
     ["Bauer", "Fröhlich", "Groß", "Huber", "Jäger", "Köhler", "Lang", "Möller", "Reiß", "Süß",
      "Vogel", "Weiß"]),
    (["Amy", "Brian", "Chloe", "Dylan", "Erin", "Fiona", "Grace", "Harry", "Isla", "Jack", "Kate",
      "Liam", "Megan", "Oscar"],
     ["Archer", "Byrne", "Clarke", "Doyle", "Evans", "Fox", "Gray", "Hughes", "Kelly", "Moore",
      "O'Brien", "Price"]),
    (["Aïcha", "Benoît", "Chloé", "Désirée", "Élodie", "François", "Gaël", "Hélène", "Joël",
      "Léa", "Noël", "Zoé"],
     ["Bézard", "Crêpin", "Dupré", "Forêt", "Garçon", "Lefèvre", "Mérite", "Prévôt"]),
    (["Alejandro", "Begoña", "Concha", "Íñigo", "José", "Lucía", "María", "Óscar", "Raúl"],
     ["Gómez", "Ibáñez", "López", "Muñoz", "Núñez", "Peña", "Ruiz"]),
    (["Bartek", "Celina", "Łucja", "Małgosia", "Paweł", "Stanisław", "Zofia", "Żaneta"],
     ["Dąbek", "Łaski", "Nowak", "Róg", "Sęk", "Wójcik", "Zając"]),
    (["Čeněk", "Dušan", "Eliška", "Jiří", "Lenka", "Ondřej", "Šárka", "Tomáš"],
     ["Bílek", "Černý", "Dvořák", "Kříž", "Malá", "Říha"]),
    (["Åse", "Bjørn", "Gøran", "Håkon", "Jørgen", "Liv", "Søren", "Tove"],
     ["Aas", "Bø", "Ødegård", "Sæther", "Våge"]),
    (["Ayşe", "Burak", "Çağla", "Emre", "Gül", "İrem", "Oğuz"],
     ["Demir", "Güneş", "Kılıç", "Öz", "Şahin", "Yıldız"]),
    (["Αθηνά", "Γιώργος", "Ελένη", "Κώστας", "Μαρία", "Νίκος", "Σοφία", "Τάσος"],
     ["Βλάχου", "Δήμου", "Λιάκος", "Ρήγας", "Φωτίου"]),
    (["Анна", "Борис", "Вера", "Глеб", "Егор", "Ирина", "Лев", "Нина", "Олег", "Юля"],
     ["Белов", "Зайцев", "Котов", "Лебедь", "Мороз", "Попов", "Чехов"]),
    (["Оксана", "Тарас", "Їжак", "Юрій"], ["Гай", "Коваль", "Шевчук"]),
    (["أحمد", "خالد", "فاطمة", "ليلى", "مريم", "يوسف"], ["حداد", "سالم", "عمر", "نجار"]),
    (["דוד", "יעל", "נועה", "רחל", "שרה"], ["כהן", "לוי", "מזרחי", "פרץ"]),
    (["小明", "芳", "伟", "秀英", "娜", "建国"], ["王", "李", "张", "刘", "陈", "杨"]),
    (["さくら", "ひなた", "健太", "花子", "太郎"], ["佐藤", "鈴木", "高橋", "田中"]),
    (["민준", "서연", "지우", "하은"], ["김", "이", "박", "최"]),
    (["आरव", "दिया", "मीरा", "रोहन"], ["गुप्ता", "राव", "शर्मा"]),
    (["สมชาย", "มาลี", "อรทัย"], ["ใจดี", "ทองคำ"]),
]
FAMILY_FIRST = ("王", "佐", "김")  # scripts that write the family name first, without a blank

TRADES = ["Taxi", "Dentist", "Bakery", "Library", "Garage", "Plumber", "Pharmacy", "Florist", "Vet",
          "School", "Town hall", "Optician", "Hotel", "Theatre", "Doctor", "Bike shop"]
PLACES = ["Nord", "Süd", "East", "West", "Mitte", "Centre", "Park", "Hafen", "24h", "No. 1"]

# Kept for drama and examples by the authorities of each country: prefix, digits that follow, the
# first of them, how many there are.
RANGES = [("+493023125", 3, 0, 1000), ("+1212555", 4, 100, 100), ("+442079460", 3, 0, 1000),
          ("+447700900", 3, 0, 1000), ("+3319900", 4, 0, 10000), ("+498999998", 3, 0, 1000),
          ("+6125550", 4, 0, 10000), ("+468465004", 2, 0, 100), ("+496990009", 3, 0, 1000),
          ("+1415555", 4, 100, 100), ("+494066969", 3, 0, 1000)]


def number(index):
    """The index-th number: the ranges take turns."""
    turn, place = divmod(index, len(RANGES))
    prefix, width, low, count = RANGES[place]
    return prefix + str(low + turn * 37 % count).zfill(width)


def names():
    """Names without end and without a repetition, the scripts mixed."""
    turn = 0
    seen = set()
    while True:
        first, last = FOLK[turn * 7 % len(FOLK)]
        step = turn // len(FOLK)
        given, family = first[step % len(first)], last[(step * 3 + turn) % len(last)]
        if last[0].startswith(FAMILY_FIRST):
            name = family + given
        elif turn % 3 == 0:
            name = family + ", " + given
        else:
            name = given + " " + family
        if turn % 11 == 4:
            name = TRADES[step % len(TRADES)] + " " + PLACES[turn % len(PLACES)]
        turn += 1
        if name in seen:
            name += " " + str(turn % 90 + 10)
        if name not in seen:
            seen.add(name)
            yield name
