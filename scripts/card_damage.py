"""The damaged card: every mistake a phone-book reader must survive, each with a note."""
from card_encoding import adn, alpha, anr, number_part, text_record, tlv, Extensions
from card_json import Directory, File, Records


def build(cards):
    """`cards`: the module that knows the frame of a card."""
    ext = Extensions(0)
    part = number_part("+447700900001", ext)[0]

    def raw(head, size=16):
        return head.ljust(size, b"\xff")

    tail = part + b"\xff\xff"
    adn_rows = [
        (adn("Good entry", "+447700900010", 16, ext), ""),
        (raw(b"Length 15") + b"\x0f\x91" + part[2:] + b"\xff\xff",
         "number length beyond the field"),
        (raw(b"Length 0") + b"\x00\x81" + b"\xff" * 10 + b"\xff\xff", "number length 0"),
        (raw(b"Length 1") + b"\x01\x91" + b"\xff" * 10 + b"\xff\xff", "TON/NPI and no digits"),
        (raw(b"Length 80") + b"\x80\x91" + part[2:] + b"\xff\xff", "number length 128"),
        (b"\xff" * 16 + b"\x00" + b"\xff" * 13, "all FF but for a number length of 0"),
        (b"\x00" * 30, "all zero"),
        (raw(b"\x81\x0d\x08\x98\xb2\xb0") + tail, "form 81 counts more than there is"),
        (raw(b"\x81\xff\x08\x98") + tail, "form 81 counts 255"),
        (raw(b"\x81\x00\x08") + tail, "form 81 counts 0"),
        (raw(b"\x81") + tail, "form 81 without count and base"),
        (raw(b"\x82\x03\x05\xd0\x90\xff\x91") + tail, "form 82 with FF inside"),
        (raw(b"\x82\x20\xff\x80\xff\xff") + tail, "form 82, base beyond the plane, counts 32"),
        (raw(b"\x80\x04\x18\x04") + tail, "form 80 ends within a character"),
        (raw(b"\x80\xd8\x3d") + tail, "form 80, half of a surrogate pair"),
        (raw(b"\x80\xde\x42\xd8\x3d") + tail, "form 80, surrogates the wrong way round"),
        (raw(b"\x80") + tail, "form 80 and nothing"),
        (raw(b"\x85\x90\xfe\x12") + tail, "alpha begins with 85"),
        (raw(b"ab\x1b") + tail, "escape at the end"),
        (raw(b"ab\x1b\x07cd") + tail, "escape before what is no extension"),
        (raw(b"Dig\xe4its") + tail, "8-bit character in GSM text"),
        (raw(b"Nibbles") + b"\x08\x81\xde\xed\xf1\x2f\x43\xee\xff" + b"\xff" * 3 + b"\xff\xff",
         "digits D, E and F in the middle"),
        (raw(b"Odd TON") + b"\x07\xf7" + part[2:] + b"\xff\xff", "TON/NPI of no meaning"),
        (raw(b"Ext 99") + part + b"\xff\x63", "extension record 99 of 6"),
        (raw(b"Ext 0") + part + b"\xff\x00", "extension record 0"),
        (raw(b"Ext loop") + part + b"\xff\x01", "extension chain 1, 2, 1, …"),
        (raw(b"Ext self") + part + b"\xff\x03", "extension chain 3, 3, …"),
        (raw(b"Ext free") + part + b"\xff\x04", "extension record is free"),
        (raw(b"Ext length") + part + b"\xff\x05", "extension length 13"),
        (raw(b"Ext party") + part + b"\xff\x06", "extension is a called-party subaddress"),
        (raw(b"CCP 200") + part + b"\xc8\xff", "capability record 200"),
        (adn("After the damage", "112", 16, ext), ""),
    ]
    ext_rows = [
        (b"\x02\x0a" + b"\x11" * 10 + b"\x02", "goes on in 2"),
        (b"\x02\x0a" + b"\x22" * 10 + b"\x01", "goes back to 1"),
        (b"\x02\x0a" + b"\x33" * 10 + b"\x03", "goes on in itself"),
        (None, ""),
        (b"\x02\x0d" + b"\x44" * 10 + b"\xff", "length 13"),
        (b"\x01\x02\x80\x50".ljust(13, b"\xff"), "a subaddress"),
    ]
    iap_rows = [
        (b"\x01\xff", ""), (b"\xc8\xff", "e-mail record 200 of 5"), (b"\x00\x00", "record 0"),
        (b"\x02\x01", "that e-mail belongs to entry 1"), (b"\x03\x02", ""), (b"\x04\xff", ""),
    ]
    email_rows = [
        (text_record("good@example.org", 42, b"\x01\x01"), ""),
        (text_record("stolen@example.org", 42, b"\x01\x01"),
         "points back to entry 1, entry 4 here"),
        (b"\x80\x00\x61\x00".ljust(40, b"\xff") + b"\x01\x05", "form 80 ends within a character"),
        (b"\x81\x30\x08\x90".ljust(40, b"\xff") + b"\x09\xfe", "counts 48; points back to set 9"),
        (b"x" * 40 + b"\x00\x00", "fills the field; points back to nothing"),
    ]
    # Set 2: the first constructed object says 127 bytes, and an inner one runs over its end.
    broken = (b"\xa8\x7f\xc0\x03\x4f\x3b\x02\xc5\x0f\x4f\x69" + b"\xa9\x04\xca\x02\x4f\x50" +
              b"\xaa\x81").ljust(100, b"\xff")
    empty_tail = tlv(0xA8, tlv(0xC0, b"\x4f\x3c") + b"\xc1\x00") + b"\x00\x00\xa9\x00\xaa\x05\xc2"
    pbr_rows = [
        (tlv(0xAA, tlv(0xC2, b"\x4f\x80") + tlv(0xC8, b"\x4f\x82") + tlv(0xC7, b"\x4f\x81")) +
         tlv(0xA8, tlv(0xC9, b"\x4f\x78") + tlv(0xC0, b"\x4f\x3a\x01") + tlv(0xC5, b"\x4f\x68") +
             tlv(0xC4, b"\x4f\x40") + tlv(0xC1, b"\x4f\x60") + tlv(0xC6, b"\x4f\x70") +
             tlv(0xD7, b"\x4f\x99")) +
         tlv(0xA9, tlv(0xCA, b"\x4f\x50") + tlv(0xC3, b"\x4f\x58")),
         "constructed objects in any order, an unknown one, a nickname file that is not there"),
        (broken, "lengths that run over the end"),
        (empty_tail, "short file id missing, empty objects, cut off"),
        (b"\x00" * 100, "zeros"),
    ]

    def records(length, count, rows, fill=None):
        return Records(length, count, [row.ljust(length, b"\xff") if row else None
                                       for row, _ in rows], fill,
                       {n: note for n, (_, note) in enumerate(rows, 1) if note})

    long_fcp = (b"\x82\x05\x42\x21\x00\x0e\x0a" + tlv(0xD5, b"\x5a" * 110) +
                b"\x83\x02\x4f\x81\x8a\x01\x05\x8b\x03\x6f\x06\x03\x80\x02\x00\x8c\x88\x00")
    files = [
        File("EF_PBR", b"\x4f\x30", records(100, 4, pbr_rows), update="ADM"),
        File("EF_ADN 1", b"\x4f\x3a", records(30, 250, adn_rows), sfi=1),
        File("EF_ADN 2", b"\x4f\x3b", Records(30, 250, [adn("Second set", "112", 16, ext)]), sfi=2),
        File("EF_ADN 3", b"\x4f\x3c", bytes(16), sfi=0, note="Transparent, where records belong."),
        File("EF_IAP 1", b"\x4f\x60", records(2, 20, iap_rows), sfi=0,
             note="20 records for 250 entries."),
        File("EF_ANRA 1", b"\x4f\x40", records(15, 250, [
            (anr("+447700900020", ext, 9), "number name 9 of 3"),
            (b"\x01\x20\x91" + b"\x11" * 10 + b"\xff\x63", "length 32, extension 99")]), sfi=0),
        File("EF_PBC 1", b"\x4f\x68", Records(1, 250, [b"\x00"], b"\x00"), sfi=0,
             note="Records of one byte, two are wanted."),
        File("EF_GRP 1", b"\x4f\x70", records(3, 250, [
            (b"\x4d\x01\xfe", "groups 77 and 254 of 2")], b"\0\0\0"), sfi=0),
        File("EF_UID 1", b"\x4f\x78", Records(2, 100, [b"\0\1", b"\0\1"], b"\0\0"), sfi=0,
             note="100 records for 250 entries; one id twice."),
        File("EF_EMAIL 1", b"\x4f\x50", records(42, 5, email_rows), sfi=0),
        File("EF_EXT1", b"\x4f\x80", records(13, 6, ext_rows, b"\x00".ljust(13, b"\xff")), sfi=0),
        File("EF_AAS", b"\x4f\x81", Records(14, 10, [alpha("Office", 14), None, b"\x81" * 14]),
             sfi=0, note="Its FCP is longer than 127 bytes and holds what nobody knows.",
             fcp=b"\x62\x81" + bytes([len(long_fcp)]) + long_fcp),
        File("EF_GAS", b"\x4f\x82", Records(16, 2, [alpha("Family", 16)]), sfi=0,
             note="Its FCP says 48 bytes and ends before.",
             fcp=b"\x62\x30\x82\x05\x42\x21\x00\x10\x02\x83\x02\x4f"),
        File("EF_CC", b"\x4f\x23", b"\xff\xff", sfi=0, invalidated=True),
    ]
    book = Directory("DF_PHONEBOOK", cards.PHONEBOOK, files)
    own = Records(30, 4, [raw(b"\x81\x40\x08") + b"\x0f\x91" + part[2:] + b"\xff\x01",
                          adn("Own", "+491712345678", 16, ext)])
    return cards.image(
        cards.master("890010123456700666", cards.telecom(book),
                     cards.application([4, 5, 10, 12, 19, 21], own)),
        atr=cards.ATR_T0,
        note="A USIM whose phone book is damaged in every way a reader must survive.")
