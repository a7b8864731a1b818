"""The collector's page in a real browser: PageTest.py COLLECTOR [CASE...]"""

import csv
import http.client
import json
import os
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from datetime import datetime
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common import utils
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

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
EVENT = 'event SCAN / START, value 3'


def wait(actual, expected=True):
    """What `actual` returns once it is as expected, or at the end of the patience."""
    end = time.monotonic() + PATIENCE
    while (value := actual()) != expected and time.monotonic() < end:
        time.sleep(0.02)
    return value


class Collector:
    def __init__(self, page_port=0):
        self.folder = tempfile.TemporaryDirectory()
        files = [Path(self.folder.name, name) for name in ('port', 'page-port')]
        self.process = subprocess.Popen(
            [COLLECTOR, '--quiet', '--folder', self.folder.name, '--port-file', files[0],
             '--page-port', str(page_port), '--page-port-file', files[1]], stdout=subprocess.DEVNULL)
        wait(lambda: all(file.exists() for file in files))
        self.port, self.page_port = (int(file.read_text()) for file in files)

    def close(self):
        self.process.terminate()
        self.process.wait()
        self.folder.cleanup()

    def send(self, *hits):
        """Sends targets of GET, or a POST's body as bytes, over one connection; returns when all are answered."""
        head = b' HTTP/1.1\r\nHost: 127.0.0.1\r\nUser-Agent: Tidy Desk/3.2.1 (Windows NT 10.0)\r\n'
        requests = b''.join(
            b'GET ' + hit.encode() + head + b'\r\n' if isinstance(hit, str) else
            b'POST /collect' + head + b'Content-Length: %d\r\n\r\n' % len(hit) + hit for hit in hits)
        context = ssl.create_default_context(cafile=str(Path(self.folder.name, 'ca.pem')))
        with context.wrap_socket(socket.create_connection(('127.0.0.1', self.port)),
                                 server_hostname='127.0.0.1') as connection:
            threading.Thread(target=connection.sendall, args=(requests,)).start()
            answers = connection.makefile('rb')
            for _ in hits:
                while b'HTTP/1.1 200' not in answers.readline():
                    pass

    def get(self, path, method='GET', **headers):
        connection = http.client.HTTPConnection('127.0.0.1', self.page_port)
        connection.request(method, path, headers=headers)
        answer = connection.getresponse()
        answer.text = answer.read().decode()
        connection.close()
        return answer


class LoopbackService(Service):
    """Speaks to the driver by address: a machine may have no name for it."""

    service_url = property(lambda self: f'http://127.0.0.1:{self.port}')

    def is_connectable(self):
        return utils.is_connectable(self.port, '127.0.0.1')


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        options = webdriver.ChromeOptions()
        options.binary_location = '/usr/bin/chromium'
        for argument in ('--headless=new', '--window-size=1400,900', '--disable-gpu', '--disable-dev-shm-usage',
                         '--remote-debugging-pipe'):
            options.add_argument(argument)
        if os.geteuid() == 0:
            options.add_argument('--no-sandbox')
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL'})
        cls.browser = webdriver.Chrome(service=LoopbackService('/usr/bin/chromedriver'), options=options)
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
        self.expect('#state', 'live')

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return self.browser.execute_script(
            'return [...document.querySelectorAll(arguments[0])].map(element => element.textContent)', selector)

    def expect(self, selector, *texts):
        self.assertEqual(wait(lambda: self.texts(selector), list(texts)), list(texts))

    def expect_rows(self, *sentences):
        self.expect('.row .sentence', *sentences)

    def press(self, *keys):
        webdriver.ActionChains(self.browser).send_keys(*keys).perform()

    def test_follows_the_collector_and_begins_anew_with_another(self):
        self.open()
        self.collector.send(classic())
        self.expect_rows(EVENT)
        self.press('p')
        self.collector.send(classic(2))
        self.expect('#state', 'paused, 1 waiting')
        self.expect_rows(EVENT)
        self.press('p')
        self.expect_rows(EVENT, f'{EVENT}, second time')
        self.assertEqual(wait(lambda: self.find('canvas').get_attribute('data-lanes'), '1'), '1')
        self.collector.close()
        self.expect('#state', 'lost')
        self.collector = Collector(self.collector.page_port)
        self.addCleanup(self.collector.close)
        self.collector.send(classic())
        self.expect_rows(EVENT)
        self.expect('#state', 'live')
        self.browser.get_log('browser')  # says that nobody answered
        self.collector.get('/api/reset', 'POST')
        self.expect_rows()

    def test_filters(self):
        other = {'visitor': 77, 'product': 'Disk%20Tool', 'tail': 'utmp=Disk%20Tool'}
        self.collector.send(classic(1, tail=PAGEVIEW), classic(2), classic(1, **other), '/__utm.gif?colour=red',
                            b'v=1&tid=UA-1&cid=7&t=event&ec=C&ea=A')
        tidy, disk, broken, other_kind = 'pageview of Tidy Desk', 'pageview of Disk Tool', 'pageview', 'event C / A'
        everything = tidy, EVENT, disk, broken, other_kind
        for name, value, *expected in [('kind', 'event', EVENT, other_kind), ('product', 'Tidy Desk', tidy, EVENT),
                                       ('verdict', 'invalid', broken, other_kind), ('verdict', 'missing', broken, other_kind),
                                       ('verdict', 'valid', tidy, EVENT, disk),
                                       ('tracker', 'classic', tidy, EVENT, disk, broken),
                                       ('text', 'scan / st', EVENT), ('text', 'COLOUR=RED', broken), ('text', 'nowhere')]:
            with self.subTest(name=name, value=value):
                self.open()
                self.expect_rows(*everything)
                if name == 'text':
                    self.press('/', value)
                else:
                    Select(self.find(f'[name={name}]')).select_by_value(value)
                self.expect_rows(*expected)
                self.press(Keys.ESCAPE)
                self.expect_rows(*everything)
        self.open('#text=SCAN')
        self.expect_rows(EVENT)
        self.collector.send(classic(2, **other), classic(3))
        self.expect_rows(EVENT, f'{EVENT}, second time')
        self.open()
        self.press('v')
        visitor = "//section[@id='visitors']//button[.='77']"
        wait(lambda: len(self.browser.find_elements(By.XPATH, visitor)), 1)
        self.browser.find_element(By.XPATH, visitor).click()
        self.expect_rows(disk, disk)

    def test_details(self):
        self.collector.send(classic(1, tail=PAGEVIEW), classic(7))
        self.open()
        self.press('j', 'j', Keys.ENTER)
        self.expect('#detail h2', f'2. {EVENT}')
        rows = [row.text.split() for row in self.browser.find_elements(By.CSS_SELECTOR, '.parameters tbody tr')]
        self.assertIn('utme event category SCAN same'.split(), rows)
        self.assertIn('utmp page Tidy Desk Tidy%20Desk'.split(), rows)
        self.expect('.headers td', 'Host', '127.0.0.1', 'User-Agent', 'Tidy Desk/3.2.1 (Windows NT 10.0)')
        facts = dict(zip(self.texts('dt'), self.texts('dd')))
        self.assertRegex(facts['since the previous hit'], r'^[0-9.]+ m?s$')
        self.assertEqual(facts['connection'], '1')
        self.assertIn('warning counter-jump', self.texts('.verdicts li')[0])
        self.press(Keys.ARROW_UP)
        self.expect('#detail h2', '1. pageview of Tidy Desk')
        self.expect('p.verdicts', 'Valid: nothing to say about this hit.')
        self.press(Keys.ESCAPE)
        self.assertFalse(self.find('#detail').is_displayed())

    def test_waits_for_hits_and_exports_those_of_a_filter(self):
        quoted = classic(2, tail='utmt=event&utme=5(S*%22A,%22*)(3)&utmp=Tidy%20Desk')
        self.collector.send(classic(1, tail=PAGEVIEW), quoted, b'v=1&tid=UA-1&cid=7&t=event&ec=C&ea=A')
        for count, arrived in (3, True), (4, False):
            answer = json.loads(self.collector.get(f'/api/wait?count={count}&timeout=50').text)
            self.assertEqual(answer, {'arrived': arrived, 'hits': 3})
        for limit, more in (2, True), (3, False):
            answer = json.loads(self.collector.get(f'/api/hits?limit={limit}').text)
            self.assertEqual((len(answer['hits']), answer['more']), (limit, more))
        csv_text, har_text, lines = (self.collector.get(f'/api/export?kind=event&format={format}').text
                                     for format in ('csv', 'har', 'jsonl'))
        rows = list(csv.DictReader(csv_text.splitlines()))
        self.assertEqual([(row['id'], row['tracker'], row['sentence'], row['target']) for row in rows],
                         [('2', 'classic', 'event S / "A,", value 3', quoted),
                          ('3', 'measurement', 'event C / A', '/collect')])
        self.assertLess(abs(datetime.fromisoformat(rows[0]['time'].replace('Z', '+00:00')).timestamp() - time.time()), 60)
        requests = [entry['request'] for entry in json.loads(har_text)['log']['entries']]
        self.assertEqual([request['url'] for request in requests],
                         [f'https://127.0.0.1{target}' for target in (quoted, '/collect')])
        self.assertIn({'name': 'utme', 'value': '5(S*"A,"*)(3)'}, requests[0]['queryString'])
        self.assertEqual(requests[1]['postData']['text'], 'v=1&tid=UA-1&cid=7&t=event&ec=C&ea=A')
        self.assertEqual([json.loads(line)['id'] for line in lines.splitlines()], [2, 3])
        self.assertEqual(self.collector.get('/api/export?format=xml').status, 400)

    def test_hundred_thousand_hits(self):
        self.collector.send(*(classic(number, tail=f'utmp=Page%20{number}') for number in range(1, 100_001)))
        self.open()
        self.expect('#shown', '100,000 hits')
        for key, row in [(Keys.HOME, 1), (Keys.END, 100_000), (Keys.ARROW_UP, 99_999)]:
            self.press(key)
            self.expect('.row[aria-selected=true] .sentence', f'pageview of Page {row}')
            self.assertLess(len(self.texts('.row')), 100)
        self.browser.execute_script("const list = document.getElementById('list'); list.scrollTop = list.scrollHeight / 2")
        self.assertTrue(wait(lambda: 'pageview of Page 50001' in self.texts('.row .sentence')))
        self.press('/', 'page%2077777')
        self.expect_rows('pageview of Page 77777')

    def test_hostile_texts_stay_texts(self):
        markup = '<img/src=x/onerror=document.title="taken"><script>document.title="taken"</script>\u202e'
        encoded = ''.join(f'%{byte:02X}' for byte in markup.encode())
        huge = b'v=1&tid=UA-1&cid=1&t=pageview&dp=' + b'A' * 1_000_000
        self.collector.send(classic(tail=f'utmp={encoded}', product=encoded), huge, '/piwik.php?' + encoded,
                            classic(2, visitor=encoded))
        self.open()
        self.assertTrue(wait(lambda: len(self.texts('.row')) == 4))
        self.assertEqual(self.texts('.row .sentence')[0], 'pageview of ' + markup.replace('\u202e', '⟨U+202E⟩'))
        for hit in range(4):
            self.press('j', Keys.ENTER)
            self.assertTrue(wait(lambda: ''.join(self.texts('#detail h2')).startswith(f'{hit + 1}. ')))
            if hit == 1:
                self.assertLess(len(self.find('#detail').text), 20_000)
                self.find('.parameters td button').click()
                self.assertTrue(wait(lambda: len(self.texts('#detail')[0]) > 1_000_000))
        self.press('v')
        self.assertTrue(wait(lambda: len(self.texts('#visitors td')) > 0))
        self.assertEqual(self.browser.title, 'Collector')
        self.expect('main img, main script')

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
