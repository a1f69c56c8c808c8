"""The two CPU boards and their volumes."""

from dataclasses import dataclass


@dataclass(frozen=True)
class Board:
    """A CPU board: its part number and the folders its volumes are mounted at."""

    part_number: str
    data_volume: str
    boot_volume: str

    @property
    def volumes(self):
        """The volumes, each once, the data volume first."""
        return tuple(dict.fromkeys((self.data_volume, self.boot_volume)))

    @property
    def version(self):
        """Version that application, GUI and configuration of the sample contents share."""
        return self.part_number + "-041A-0300"


BOARDS = {
    "K5901": Board("K5901", data_volume="d:", boot_volume="c:"),
    "K5902": Board("K5902", data_volume="ata0a", boot_volume="ata0a"),
}
