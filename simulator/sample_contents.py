"""What the simulated RTU holds when it is new: an application, an operating system, a GUI, a configuration, an ISaGRAF
program and templates. Every byte and every date is the same each time.
"""

import calendar
import os
import random
from dataclasses import dataclass

BLOCK_BYTES = 1 << 20
OS_BYTES = 1482752  # comfortably more than the 900 KB below which an operating system looks cut off
APPLICATION_BYTES = 307200
NEVER_SET = (1980, 1, 1, 0, 0, 0)  # the date of a file that was written before the clock was set

CONFIGURATION_NAMES = """AnalogInputs AnalogOutputs BinaryInputs BinaryOutputs Counters Calculations Channels Ports
 Dnp3Slave Dnp3Master Iec101Slave Iec104Slave ModbusMaster ModbusSlave Alarms Events Trends Users Scaling Deadbands
 Interlocks Bay01 Bay02 Bay03 Bay04 Feeder01 Feeder02 Feeder03 Transformer01 Transformer02 TapChanger Metering TimeSync
 Modems Routing Logging""".split()
TEMPLATE_FOLDERS = ["Maps", "Bays", "Alarms", "Event Lists", "\u00dcbersicht", "Reserve"]
EMPTY_TEMPLATE_FOLDER = "Reserve"
GUI_FOLDERS = ["pages", "images", "scripts"]
ISAGRAF_FOLDERS = ["Interlock", "LoadShed"]


@dataclass(frozen=True)
class Amounts:
    """How much of everything there is; larger numbers make an RTU for load tests."""

    xml_files: int = len(CONFIGURATION_NAMES)
    isagraf_files: int = 12
    template_folders: int = len(TEMPLATE_FOLDERS)
    template_files: int = 4
    gui_folders: int = len(GUI_FOLDERS)
    application_bytes: int = APPLICATION_BYTES
    latin1_names: bool = False


def fill(root, board, amounts):
    """Make the board's volumes below the root and everything in them."""
    data = os.path.join(root, board.data_volume)
    boot = os.path.join(root, board.boot_volume)
    _write_boot_files(boot, board)
    _write_block_file(os.path.join(data, board.version + ".out"), amounts.application_bytes, (2015, 9, 30, 11, 5, 42))
    web = os.path.join(data, "webfiles")
    _write_gui(os.path.join(web, "gui"), board, amounts.gui_folders)
    _write_configuration(os.path.join(web, "xml"), board, amounts.xml_files)
    _write_isagraf(os.path.join(web, "ISaGRAF"), amounts.isagraf_files)
    _write_templates(os.path.join(web, "Tmpl"), board, amounts)
    _date_folders(root)


def _write_boot_files(boot, board):
    _write_block_file(os.path.join(boot, "vxworks"), OS_BYTES, (2014, 11, 6, 9, 30, 0))
    if board.part_number == "K5902":
        _write_block_file(os.path.join(boot, "WebCli"), 212480, (2014, 11, 6, 9, 31, 12))
    _write_block_file(os.path.join(boot, "bootrom.sys"), 393216, (2009, 2, 17, 16, 44, 10))
    bootline = ('<?xml version="1.0"?>\n<BOOTLINE>\n'
                f'  <DEVICE>{board.boot_volume}</DEVICE>\n  <FILE>/{board.boot_volume}/vxworks</FILE>\n'
                '  <ADDRESS>192.168.10.12:ffffff00</ADDRESS>\n  <FLAGS>0x8</FLAGS>\n</BOOTLINE>\n')
    _write(os.path.join(boot, "bootline.xml"), bootline, NEVER_SET)


def _write_gui(folder, board, folders):
    _write_block_file(os.path.join(folder, board.version + ".gui"), 24576, (2015, 10, 2, 8, 15, 0))
    _write(os.path.join(folder, "index.htm"), _page("Harbour Road Substation 12"), (2012, 5, 21, 13, 0, 30))
    _write(os.path.join(folder, "profileC.xml"),
           '<?xml version="1.0"?>\n<PROFILE>\n  <GUI>\n    <NAME>Substation Display</NAME>\n'
           f'    <VERSION>{board.version[6:]}</VERSION>\n    <LASTDATE>02/10/2015</LASTDATE>\n  </GUI>\n</PROFILE>\n',
           (2015, 10, 2, 8, 15, 2))
    for number, name in enumerate(_names(GUI_FOLDERS, folders, "pages"), start=1):
        for page in range(1, 4):
            path = os.path.join(folder, name, f"{name}{page}.htm")
            _write(path, _page(f"Display {number}.{page}"), (2013, number % 12 + 1, page, 10, page, 0))


def _write_configuration(folder, board, files):
    for number, name in enumerate(_names(CONFIGURATION_NAMES, files, "PointList"), start=1):
        path = os.path.join(folder, name + ".xml")
        _write(path, _points(name, board.version, 8 + number % 17), _spread_date(2016, number))


def _write_isagraf(folder, files):
    for number in range(1, files + 1):
        places = [folder, *(os.path.join(folder, name) for name in ISAGRAF_FOLDERS)]
        kind = ("x8m", "tic", "rll")[number % 3]
        path = os.path.join(places[(number - 1) % len(places)], f"prog{number:02}.{kind}")
        _write_block_file(path, 512 * number, _spread_date(2011, number))


def _write_templates(folder, board, amounts):
    os.makedirs(folder, exist_ok=True)
    for index, name in enumerate(_names(TEMPLATE_FOLDERS, amounts.template_folders, "Group")):
        if amounts.latin1_names:
            name = os.fsdecode(name.encode("latin-1"))
        place = os.path.join(folder, name)
        os.makedirs(place, exist_ok=True)
        if name == EMPTY_TEMPLATE_FOLDER:
            continue
        for number in range(1, amounts.template_files + 1):
            path = os.path.join(place, f"Template{index + 1:02}{number:02}.xml")
            _write(path, _points(f"Template {index + 1}.{number}", board.version, 4 + number % 9),
                   _spread_date(2017, 7 * index + number))


def _names(known, count, further):
    """The first names of those known, and numbered ones behind them."""
    return [known[i] if i < len(known) else f"{further}{i + 1:03}" for i in range(count)]


def _points(name, version, count):
    """A configuration or template document: a channel and its points."""
    chance = random.Random(name)
    lines = ['<?xml version="1.0" encoding="UTF-8"?>', f'<CONFIGURATION VER="{version}" NAME="{name}">',
             f'  <CHANNEL NUMBER="{chance.randint(1, 8)}" PROTOCOL="DNP3" ADDRESS="{chance.randint(1, 250)}">']
    for index in range(count):
        low = chance.randint(-500, 0)
        lines.append(f'    <POINT INDEX="{index}" NAME="{name} {index + 1:03}" CLASS="{chance.randint(1, 3)}"'
                     f' LOW="{low}" HIGH="{low + chance.randint(100, 900)}" DEADBAND="{chance.randint(1, 20)}"/>')
    return "\n".join([*lines, "  </CHANNEL>", "</CONFIGURATION>", ""])


def _page(title):
    return f"<html>\r\n<head><title>{title}</title></head>\r\n<body><h1>{title}</h1></body>\r\n</html>\r\n"


def _spread_date(year, number):
    return (year + number % 3, number % 12 + 1, number % 28 + 1, number % 24, number * 7 % 60, number * 13 % 60)


def _write(path, text, date):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8", newline="") as file:
        file.write(text)
    _set_date(path, date)


def _write_block_file(path, size, date):
    """A file of bytes that look random: one block, with its number in front so that no two blocks are alike."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    block = random.Random(os.path.basename(path)).randbytes(min(size, BLOCK_BYTES))
    with open(path, "wb") as file:
        for start in range(0, size, BLOCK_BYTES):
            numbered = start.to_bytes(8, "big") + block[8:]
            file.write(numbered[:size - start])
    _set_date(path, date)


def _date_folders(root):
    """Folders last: every file written into one has moved its date."""
    for place, folders, _ in os.walk(root, topdown=False):
        for name in folders:
            _set_date(os.path.join(place, name), (2010, 6, 14, 7, 45, 20))


def _set_date(path, date):
    seconds = calendar.timegm(date)
    os.utime(path, (seconds, seconds))
