"""A session's data connection on pyftpdlib's loop, where the faults of a transfer strike."""

from pyftpdlib.handlers import DTPHandler

from faults import AT_THE_END, MIDWAY
from listings import LISTING_ERROR

BLOCK_BYTES = 256 * 1024  # large enough that the loop's own cost does not bound a transfer
PACED_BLOCKS_PER_SECOND = 20  # often enough that a slow transfer looks steady


class PartOfFile:
    """The first bytes of a file: what a transfer sends that ends too early."""

    def __init__(self, file, length):
        self._file = file
        self._left = length
        self.name = file.name

    @property
    def closed(self):
        return self._file.closed

    def read(self, size):
        data = self._file.read(min(size, self._left))
        self._left -= len(data)
        return data

    def close(self):
        self._file.close()


class DataChannel(DTPHandler):
    """A data connection. Its session knows the fault of the running transfer."""

    def __init__(self, sock, cmd_channel):
        self._stalled = False
        self._bytes_per_second = cmd_channel.rtu.bytes_per_second
        if self._bytes_per_second:
            block = max(1, self._bytes_per_second // PACED_BLOCKS_PER_SECOND)
            self.ac_in_buffer_size = self.ac_out_buffer_size = min(block, BLOCK_BYTES)
        else:
            self.ac_in_buffer_size = self.ac_out_buffer_size = BLOCK_BYTES
        super().__init__(sock, cmd_channel)

    def use_sendfile(self):
        return not self._bytes_per_second and super().use_sendfile()

    def send(self, data):
        sent = super().send(data)
        self._rest_after(sent)
        return sent

    def handle_read(self):
        before = self.tot_bytes_received
        super().handle_read()
        fault = self.cmd_channel.transfer_fault
        if fault and fault.name in MIDWAY and self.tot_bytes_received:
            self.handle_close()
        self._rest_after(self.tot_bytes_received - before)

    handle_read_event = handle_read

    def handle_close(self):
        """All was sent or received, or the client has closed, or the fault's moment has come."""
        fault = self.cmd_channel.transfer_fault
        if self._closed or self._stalled:
            return
        if fault and fault.name in MIDWAY:
            self._end_midway(fault)
        elif fault and fault.name in AT_THE_END:
            self._end_wrongly(fault)
        else:
            super().handle_close()

    def close(self):
        if not self._closed:
            with self.cmd_channel.answering_transfer():
                super().close()

    def _end_midway(self, fault):
        if fault.name == "stall":
            self._stall()
            return
        self._keep_half()
        if fault.name == "refuse-during":
            self._resp = (f"{fault.code} Transfer ended by the device", self.log)
        self.close()
        if fault.name == "cut-during":
            self.cmd_channel.hang_up()

    def _end_wrongly(self, fault):
        """The transfer is whole so far; cut-after itself is the session's, in place of the reply."""
        if fault.name == "truncate":
            self._keep_half()
        if fault.name == "listing-error":
            self._resp = ("550 " + LISTING_ERROR, self.log)
            self.close()
        else:
            super().handle_close()

    def _keep_half(self):
        if self.receive:
            self.file_obj.truncate(self.file_obj.tell() // 2)

    def _stall(self):
        """Keep the connection and do nothing more with it."""
        self._stalled = True
        self._idler.cancel()
        self.del_channel()
        self.cmd_channel.mute()

    def _rest_after(self, size):
        """Pause for as long as the bytes would have taken at the RTU's speed."""
        if self._bytes_per_second and size > 0 and not self._closed and not self._stalled:
            self.del_channel()
            self.call_later(size / self._bytes_per_second, self._go_on)

    def _go_on(self):
        if not self._closed and not self._stalled:
            self.add_channel(events=self.ioloop.READ if self.receive else self.ioloop.WRITE)
