"""The collector's page in a real browser: PageTest.py COLLECTOR [CASE...]"""

import http.client
import os
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common import utils
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

COLLECTOR = sys.argv.pop(1)
PATIENCE = 20  # seconds; nothing is expected to take one


def classic(utms=1, visitor=5155, tail='utmt=event&utme=5(SCAN*START*)(3)&utmp=Tidy%20Desk',
            product='Tidy%20Desk'):
    """The target of a classic hit as the tables want it."""
    cookies = (f'__utma%3D123456789.{visitor}.1700000000.1700000000.1700000000.1%3B%2B'
               f'__utmb%3D123456789.{utms}.10.1700000000%3B%2B__utmc%3D123456789')
    return (f'/__utm.gif?utmwv=5.4.3&utms={utms}&utmn={5000 + utms}&utmac=UA-1&utmsr=1024x768&{tail}'
            f'&utmhn={product}&utmcs=UTF-8&utmdt={product}&utmul=de%2DDE&utmr={product}&aip=1&utmcc={cookies}')


PAGEVIEW = 'utmp=Tidy%20Desk'


class Collector:
    def __init__(self, page_port=0):
        self.folder = tempfile.TemporaryDirectory()
        files = [Path(self.folder.name, name) for name in ('port', 'page-port')]
        self.process = subprocess.Popen(
            [COLLECTOR, '--quiet', '--folder', self.folder.name, '--port-file', files[0],
             '--page-port', str(page_port), '--page-port-file', files[1]], stdout=subprocess.DEVNULL)
        WebDriverWait(self, PATIENCE, 0.02).until(lambda _: all(file.exists() for file in files))
        self.port, self.page_port = (int(file.read_text()) for file in files)

    def close(self):
        self.process.terminate()
        self.process.wait()
        self.folder.cleanup()

    def send(self, *requests):
        """Sends targets to GET, or bodies to POST as bytes, over one connection; returns when all are answered."""
        context = ssl.create_default_context(cafile=str(Path(self.folder.name, 'ca.pem')))
        with context.wrap_socket(socket.create_connection(('127.0.0.1', self.port)),
                                 server_hostname='127.0.0.1') as connection:
            writing = threading.Thread(target=connection.sendall, args=(b''.join(map(self.write, requests)),))
            writing.start()
            answers, rest = 0, b''
            while answers < len(requests):
                rest += connection.recv(65536)
                *whole, rest = rest.split(b'HTTP/1.1 200')
                answers += len(whole)
            writing.join()

    @staticmethod
    def write(request):
        common = b'Host: 127.0.0.1\r\nUser-Agent: Tidy Desk/3.2.1 (Windows NT 10.0)\r\n'
        if isinstance(request, str):
            return f'GET {request} HTTP/1.1\r\n'.encode() + common + b'\r\n'
        return (b'POST /collect?z=1 HTTP/1.1\r\n' + common + b'Content-Length: %d\r\n\r\n' % len(request)) + request

    def get(self, path, method='GET', **headers):
        connection = http.client.HTTPConnection('127.0.0.1', self.page_port)
        connection.request(method, path, headers=headers)
        answer = connection.getresponse()
        answer.read()
        connection.close()
        return answer


class LoopbackService(Service):
    """Speaks to the driver by address: a machine may have no name for it."""

    @property
    def service_url(self):
        return f'http://127.0.0.1:{self.port}'

    def is_connectable(self):
        return utils.is_connectable(self.port, '127.0.0.1')


def start_browser():
    options = webdriver.ChromeOptions()
    options.binary_location = '/usr/bin/chromium'
    for argument in ('--headless=new', '--window-size=1400,900', '--disable-gpu', '--disable-dev-shm-usage',
                     '--remote-debugging-pipe'):
        options.add_argument(argument)
    if os.geteuid() == 0:
        options.add_argument('--no-sandbox')
    options.set_capability('goog:loggingPrefs', {'browser': 'ALL'})
    return webdriver.Chrome(service=LoopbackService('/usr/bin/chromedriver'), options=options)


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = start_browser()
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        self.collector = Collector()
        self.addCleanup(self.collector.close)

    def tearDown(self):
        complaints = [entry['message'] for entry in self.browser.get_log('browser') if entry['level'] == 'SEVERE']
        self.browser.get('about:blank')
        self.assertEqual(complaints, [])

    def open(self, fragment=''):
        self.browser.get(f'http://127.0.0.1:{self.collector.page_port}/{fragment}')
        self.wait_for('#state', 'live')

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return self.browser.execute_script(
            'return [...document.querySelectorAll(arguments[0])].map(element => element.textContent)', selector)

    def rows(self):
        """The sentences in sight and a little beyond, from top to bottom."""
        return self.browser.execute_script(
            "return [...document.querySelectorAll('.row')].sort((a, b) => parseInt(a.style.top) - parseInt(b.style.top))"
            ".map(row => row.querySelector('.sentence').textContent)")

    def wait(self, condition, message):
        WebDriverWait(self.browser, PATIENCE, 0.02).until(lambda _: condition(), message)

    def wait_for(self, selector, text):
        self.wait(lambda: text in self.texts(selector), f'{selector} never says {text}')

    def wait_for_rows(self, *sentences):
        try:
            self.wait(lambda: self.rows() == list(sentences), '')
        except Exception:
            self.assertEqual(self.rows(), list(sentences))

    def press(self, *keys):
        webdriver.ActionChains(self.browser).send_keys(*keys).perform()

    def test_shows_what_arrives_and_holds_it_during_a_pause(self):
        self.open()
        self.collector.send(classic())
        self.wait_for_rows('event SCAN / START, value 3')
        self.press('p')
        self.collector.send(classic(2))
        self.wait_for('#state', 'paused, 1 waiting')
        self.wait_for_rows('event SCAN / START, value 3')
        self.press('p')
        self.wait_for_rows('event SCAN / START, value 3', 'event SCAN / START, value 3, second time')
        self.wait(lambda: self.find('canvas').get_attribute('data-lanes') == '1', 'no lane')
        self.collector.get('/api/reset', 'POST')
        self.wait_for_rows()

    def test_begins_anew_when_another_collector_answers(self):
        self.collector.send(classic(1), classic(2))
        self.open()
        self.collector.close()
        self.wait_for('#state', 'lost')
        self.collector = Collector(self.collector.page_port)
        self.addCleanup(self.collector.close)
        self.collector.send(classic(1, tail=PAGEVIEW))
        self.wait_for_rows('pageview of Tidy Desk')
        self.browser.get_log('browser')  # says that nobody answered

    def test_filters(self):
        other = {'visitor': 77, 'product': 'Disk%20Tool'}
        self.collector.send(classic(1, tail=PAGEVIEW), classic(2), classic(1, tail='utmp=Disk%20Tool', **other),
                            '/__utm.gif?colour=red')
        self.open()
        views = ['pageview of Tidy Desk', 'pageview of Disk Tool']
        event = 'event SCAN / START, value 3'
        broken = self.rows()[-1]
        for name, value, expected in [('kind', 'event', [event]), ('product', 'Tidy Desk', [views[0], event]),
                                      ('verdict', 'invalid', [broken]), ('verdict', 'missing', [broken]),
                                      ('verdict', 'valid', [views[0], event, views[1]]), ('tracker', 'classic', None)]:
            with self.subTest(name=name, value=value):
                self.open()
                Select(self.find(f'[name={name}]')).select_by_value(value)
                self.wait_for_rows(*(expected or [views[0], event, views[1], broken]))
        for text, expected in [('scan / st', [event]), ('COLOUR=RED', [broken]), ('nowhere', [])]:
            with self.subTest(text=text):
                self.open()
                self.press('/', text)
                self.wait_for_rows(*expected)
                self.press(Keys.ESCAPE)
                self.wait_for_rows(views[0], event, views[1], broken)
        self.open('#text=SCAN')
        self.wait_for_rows(event)
        self.collector.send(classic(2, tail='utmp=Disk%20Tool', **other), classic(3))
        self.wait_for_rows(event, f'{event}, second time')
        self.open()
        self.press('v')
        self.wait(lambda: '77' in self.texts('#visitors button'), 'the visitor is not listed')
        self.browser.find_element(By.XPATH, "//section[@id='visitors']//button[.='77']").click()
        self.wait_for_rows(views[1], views[1])

    def test_details(self):
        self.collector.send(classic(1, tail=PAGEVIEW), classic(7))
        self.open()
        self.press('j', 'j', Keys.ENTER)
        self.wait_for('#detail h2', '2. event SCAN / START, value 3')
        rows = self.browser.execute_script(
            "return [...document.querySelectorAll('.parameters tbody tr')].map(row => [...row.cells].map(cell => cell.textContent))")
        self.assertEqual([row[0] for row in rows[:9]],
                         ['utmwv', 'utms', 'utmn', 'utmac', 'utmsr', 'utmt', 'utme', 'utme', 'utme'])
        self.assertIn(['utme', 'event category', 'SCAN', 'same'], rows)
        self.assertIn(['utmp', 'page', 'Tidy Desk', 'Tidy%20Desk'], rows)
        self.assertEqual(self.texts('.headers td'), ['Host', '127.0.0.1', 'User-Agent', 'Tidy Desk/3.2.1 (Windows NT 10.0)'])
        facts = dict(zip(self.texts('dt'), self.texts('dd')))
        self.assertRegex(facts['since the previous hit'], r'^[0-9.]+ m?s$')
        self.assertEqual(facts['connection'], '1')
        self.assertIn('warning counter-jump', self.texts('.verdicts li')[0])
        self.press(Keys.ARROW_UP)
        self.wait_for('#detail h2', '1. pageview of Tidy Desk')
        self.assertEqual(self.texts('p.verdicts'), ['Valid: nothing to say about this hit.'])
        self.press(Keys.ESCAPE)
        self.assertFalse(self.find('#detail').is_displayed())

    def test_hundred_thousand_hits(self):
        self.collector.send(*(classic(number, tail=f'utmp=Page%20{number}') for number in range(1, 100_001)))
        self.open()
        self.wait_for('#shown', '100,000 hits')
        for key, row in [(Keys.HOME, 1), (Keys.END, 100_000), (Keys.ARROW_UP, 99_999)]:
            self.press(key)
            self.wait_for('.row[aria-selected=true] .sentence', f'pageview of Page {row}')
            self.assertLess(len(self.rows()), 100)
        self.browser.execute_script("const list = document.getElementById('list'); list.scrollTop = list.scrollHeight / 2")
        self.wait(lambda: 'pageview of Page 50001' in self.rows(), 'the middle does not come')
        self.press('/', 'page%2077777')
        self.wait_for_rows('pageview of Page 77777')

    def test_hostile_texts_stay_texts(self):
        markup = '<img/src=x/onerror=document.title="taken"><script>document.title="taken"</script>\u202e'
        encoded = ''.join(f'%{byte:02X}' for byte in markup.encode())
        huge = b'v=1&tid=UA-1&cid=1&t=pageview&dp=' + b'A' * 1_000_000
        self.collector.send(classic(tail=f'utmp={encoded}', product=encoded), huge, '/piwik.php?' + encoded,
                            classic(2, visitor=encoded))
        self.open()
        self.wait(lambda: len(self.rows()) == 4, 'not all rows')
        shown = markup.replace('\u202e', '⟨U+202E⟩')
        self.assertEqual(self.rows()[0], f'pageview of {shown}')
        for hit in range(4):
            self.press('j', Keys.ENTER)
            self.wait(lambda: self.texts('#detail h2')[0:1] and self.texts('#detail h2')[0].startswith(f'{hit + 1}. '),
                      f'no details of {hit + 1}')
            if hit == 1:
                self.assertLess(len(self.find('#detail').text), 20_000)
                self.find('.parameters td button').click()
                self.wait(lambda: len(self.find('#detail').get_attribute('textContent')) > 1_000_000, 'still cut')
        self.press('v')
        self.wait(lambda: self.texts('#visitors td'), 'no visitors')
        self.assertEqual(self.browser.title, 'Collector')
        self.assertEqual(self.texts('main img, main script'), [])

    def test_only_this_machines_own_page_is_answered(self):
        own = f'127.0.0.1:{self.collector.page_port}'
        for headers, status in [({}, 200), ({'Host': f'localhost:{self.collector.page_port}'}, 200),
                                ({'Origin': f'http://{own}'}, 200), ({'Host': 'collector.example'}, 403),
                                ({'Host': '127.0.0.1'}, 403), ({'Origin': 'https://collector.example'}, 403),
                                ({'Origin': 'null'}, 403)]:
            for path, method in [('/', 'GET'), ('/api/hits', 'GET'), ('/api/reset', 'POST')]:
                with self.subTest(headers=headers, path=path):
                    answer = self.collector.get(path, method, **headers)
                    self.assertEqual(answer.status, status)
                    self.assertEqual(answer.getheader('Content-Security-Policy'), "default-src 'self'")


if __name__ == '__main__':
    unittest.main()
